// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/CopyItem.h"

#include "Platform/Core/Files/UnnamedFile.h"
#include "Platform/Core/Trees/CopyAttributes.h"
#include "Platform/Core/Trees/CopyContents.h"
#include "Platform/Core/Trees/CopyProgress.h"
#include "Platform/Core/Trees/ParallelTreeCopy.h"
#include "Platform/Core/Trees/UnfinishedItem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>

namespace platform {
namespace {

// Whether the copy may be given its final name.
bool mayBePublished(CopyProgress *progress)
{
    return progress == nullptr || progress->beginPublishing();
}

int copyFile(const ItemPlace &from, const ItemPlace &to, CopyProgress *progress, CopiedItem &copied)
{
    const Descriptor source(retried([&] {
        return ::openat(from.folder.fd(), from.name.constData(),
                        O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }));
    auto &status = copied.original;
    if (!source.isOpen() || ::fstat(source.fd(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return ESTALE; // replaced by something else meanwhile
    }
    clearUnfinishedItemsUnlessRecent(to.folder.fd());
    UnnamedFile copy;
    auto error = copy.create(to.folder.fd(), S_IRUSR | S_IWUSR);
    if (error == 0) {
        error = clearAccessLists(copy.descriptor());
    }
    if (error == 0) {
        error = copyContents(source.fd(), status, copy.descriptor(), progress);
    }
    if (error == 0) {
        error = copyAttributes(source.fd(), status, copy.descriptor());
    }
    if (error == 0 && ::fstat(copy.descriptor(), &copied.copy) != 0) {
        error = errno;
    }
    if (error != 0) {
        return error;
    }
    return mayBePublished(progress) ? copy.publish(to.name) : ECANCELED;
}

int copySpecialItem(const ItemPlace &from, const ItemPlace &to, CopyProgress *progress,
                    CopiedItem &copied)
{
    UnfinishedItem copy;
    if (const auto error = copy.create(to.folder.fd()); error != 0) {
        return error;
    }
    const auto &status = copied.original;
    if (const auto error =
            copySpecial(from.folder.fd(), from.name, status, copy.folder(), UnfinishedItem::name);
        error != 0) {
        return error;
    }
    if (::fstatat(copy.folder(), UnfinishedItem::name, &copied.copy, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno;
    }
    if (!mayBePublished(progress)) {
        return ECANCELED;
    }
    const auto error = copy.publish(to.name);
    if (error == 0 && progress != nullptr) {
        progress->addBytes(static_cast<std::uint64_t>(status.st_size));
    }
    return error;
}

// Whether a folder is another one or below it.
bool isInside(int folder, const struct stat &other)
{
    struct stat status {};
    if (::fstat(folder, &status) != 0) {
        return false;
    }
    for (Descriptor above(::fcntl(folder, F_DUPFD_CLOEXEC, 0)); above.isOpen();) {
        if (status.st_dev == other.st_dev && status.st_ino == other.st_ino) {
            return true;
        }
        const auto below = status;
        above = Descriptor(::openat(above.fd(), "..", O_PATH | O_CLOEXEC));
        if (!above.isOpen() || ::fstat(above.fd(), &status) != 0 ||
            (status.st_dev == below.st_dev && status.st_ino == below.st_ino)) {
            return false;
        }
    }
    return false;
}

} // namespace

int copySpecial(int fromFolder, const QByteArray &from, const struct stat &status, int toFolder,
                const QByteArray &to)
{
    if (S_ISLNK(status.st_mode)) {
        std::array<char, PATH_MAX> target{};
        const auto size = ::readlinkat(fromFolder, from.constData(), target.data(), PATH_MAX - 1);
        if (size < 0 || ::symlinkat(target.data(), toFolder, to.constData()) != 0) {
            return errno;
        }
    } else if (::mknodat(toFolder, to.constData(), (status.st_mode & S_IFMT) | S_IRUSR | S_IWUSR,
                         status.st_rdev) != 0) {
        return errno;
    }
    return copyAttributesOfSpecial(status, toFolder, to.constData());
}

FileError copyPlace(const ItemPlace &from, const QString &source, const ItemPlace &to,
                    const QString &destination, CopyProgress *progress, CopyPurpose purpose,
                    CopiedItem &copied)
{
    auto &status = copied.original;
    struct stat existing {};
    if (::fstatat(from.folder.fd(), from.name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return {errno, source};
    }
    if (::fstatat(to.folder.fd(), to.name.constData(), &existing, AT_SYMLINK_NOFOLLOW) == 0) {
        return {EEXIST, destination};
    }
    if (S_ISDIR(status.st_mode)) {
        CopyProgress unused;
        return isInside(to.folder.fd(), status)
                   ? FileError(EINVAL, destination)
                   : copyTree(from, to, source, progress != nullptr ? *progress : unused, purpose,
                              copied);
    }
    const auto error = S_ISREG(status.st_mode) ? copyFile(from, to, progress, copied)
                                               : copySpecialItem(from, to, progress, copied);
    if (error != 0) {
        return {error, error == EEXIST ? destination : source};
    }
    if (progress != nullptr) {
        progress->addItem();
    }
    return {};
}

FileError copyItem(const QString &source, const QString &destination, CopyProgress *progress)
{
    ItemPlace from;
    ItemPlace to;
    CopiedItem copied;
    if (const auto error = openPlace(source, from); error != 0) {
        return {error, source};
    }
    if (const auto error = openPlace(destination, to); error != 0) {
        return {error, destination};
    }
    return copyPlace(from, source, to, destination, progress, CopyPurpose::Copy, copied);
}

} // namespace platform
