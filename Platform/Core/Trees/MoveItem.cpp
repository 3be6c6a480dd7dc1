// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/MoveItem.h"

#include "Platform/Core/Trees/CopyItem.h"
#include "Platform/Core/Trees/Removability.h"
#include "Platform/Core/Trees/UnfinishedItem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

bool isSameItem(const struct stat &item, const ItemPlace &place)
{
    struct stat now {};
    return ::fstatat(place.folder.fd(), place.name.constData(), &now, AT_SYMLINK_NOFOLLOW) == 0 &&
           now.st_dev == item.st_dev && now.st_ino == item.st_ino;
}

// Removes an item, if that still has the name.
Removal removeFrom(const ItemPlace &place, const struct stat &item, const QString &path)
{
    const auto folder = place.folder.fd();
    const auto *name = place.name.constData();
    if (!isSameItem(item, place)) {
        return {{ENOENT, path}, false};
    }
    if (!S_ISDIR(item.st_mode)) {
        const auto isRemoved = ::unlinkat(folder, name, 0) == 0;
        return {isRemoved ? FileError() : FileError(errno, path), isRemoved};
    }
    const Descriptor open(retried(
        [&] { return ::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
    if (!open.isOpen()) {
        return {{errno, path}, false};
    }
    return removeAtOnce(folder, place.name, open.fd(), path);
}

// 0, else the reason (errno) why an item cannot be removed.
int removalError(const ItemPlace &place)
{
    struct stat folder {};
    struct stat item {};
    if (::fstat(place.folder.fd(), &folder) != 0 ||
        ::fstatat(place.folder.fd(), place.name.constData(), &item, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno;
    }
    // This folder's permissions are not changed, even if it is ours.
    if (::faccessat(place.folder.fd(), ".", W_OK | X_OK, AT_EACCESS) != 0) {
        return errno;
    }
    return Removability(place.folder.fd(), folder).errorFor(item.st_uid);
}

FileError moveByCopying(const ItemPlace &from, const QString &source, const ItemPlace &to,
                        const QString &destination)
{
    if (const auto error = removalError(from); error != 0) {
        return {error, source};
    }
    clearUnfinishedItemsUnlessRecent(from.folder.fd());
    CopiedItem copied;
    if (auto error = copyPlace(from, source, to, destination, nullptr, CopyPurpose::Move, copied)) {
        return error;
    }
    const auto removal = removeFrom(from, copied.original, source);
    if (!removal.error || removal.hasRemovedAnything) {
        return {};
    }
    removeFrom(to, copied.copy, destination);
    return removal.error;
}

} // namespace

FileError movePlace(const ItemPlace &from, const QString &source, const ItemPlace &to,
                    const QString &destination)
{
    const auto error = renameInPlace(from.folder.fd(), from.name, to.folder.fd(), to.name);
    if (error == EXDEV) {
        return moveByCopying(from, source, to, destination);
    }
    return error == 0 ? FileError() : FileError(error, error == EEXIST ? destination : source);
}

FileError moveItem(const QString &source, const QString &destination)
{
    ItemPlace from;
    ItemPlace to;
    if (const auto error = openPlace(source, from); error != 0) {
        return {error, source};
    }
    if (const auto error = openPlace(destination, to); error != 0) {
        return {error, destination};
    }
    return movePlace(from, source, to, destination);
}

} // namespace platform
