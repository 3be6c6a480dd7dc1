// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/FileStatus.h"

#include "Platform/Descriptor.h"
#include "Platform/FileName.h"
#include "Platform/ItemPlace.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>

namespace platform {
namespace {

// 0, else the reason (errno).
int readStatus(const QString &path, int flags, struct stat &status)
{
    const auto bytes = fileNameBytes(path);
    if (bytes.contains('\0')) {
        return EINVAL;
    }
    return ::fstatat(AT_FDCWD, bytes.constData(), &status, flags) == 0 ? 0 : errno;
}

enum class Flag { Clear, Set, Unknown };

Flag immutableFlag(const ItemPlace &place, mode_t &mode, int &error)
{
    struct statx status {};
    error = ::statx(place.folder.number(), place.name.constData(), AT_SYMLINK_NOFOLLOW, STATX_TYPE,
                    &status) == 0
                ? 0
                : errno;
    mode = status.stx_mode;
    if (error != 0 || (status.stx_attributes_mask & STATX_ATTR_IMMUTABLE) == 0) {
        return Flag::Unknown;
    }
    return (status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0 ? Flag::Set : Flag::Clear;
}

// 0, else the reason (errno).
int changeFlag(const ItemPlace &place, bool immutable)
{
    const Descriptor file(retried([&] {
        return ::openat(place.folder.number(), place.name.constData(),
                        O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }));
    int flags = 0; // the kernel's interface says long and means int
    if (!file.isOpen() || ::ioctl(file.number(), FS_IOC_GETFLAGS, &flags) != 0) {
        return errno;
    }
    const auto wanted = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    if (wanted == flags || ::ioctl(file.number(), FS_IOC_SETFLAGS, &wanted) == 0) {
        return 0;
    }
    return errno;
}

} // namespace

bool fileExists(const QString &path)
{
    struct stat status {};
    return readStatus(path, 0, status) == 0;
}

bool isFolder(const QString &path)
{
    struct stat status {};
    return readStatus(path, 0, status) == 0 && S_ISDIR(status.st_mode);
}

bool itemExists(const QString &path)
{
    struct stat status {};
    return readStatus(path, AT_SYMLINK_NOFOLLOW, status) == 0;
}

bool isFolderItself(const QString &path)
{
    struct stat status {};
    return readStatus(path, AT_SYMLINK_NOFOLLOW, status) == 0 && S_ISDIR(status.st_mode);
}

QString symbolicLinkDestination(const QString &path)
{
    const auto bytes = fileNameBytes(path);
    std::array<char, PATH_MAX> target{};
    const auto size =
        bytes.contains('\0') ? -1 : ::readlink(bytes.constData(), target.data(), target.size());
    return size < 0 ? QString()
                    : fileNameFromBytes(QByteArray(target.data(), static_cast<int>(size)));
}

bool isImmutable(const QString &path)
{
    ItemPlace place;
    mode_t mode = 0;
    int error = 0;
    return openPlace(path, place) == 0 && immutableFlag(place, mode, error) == Flag::Set;
}

FileError setImmutable(const QString &path, bool immutable)
{
    ItemPlace place;
    if (const auto error = openPlace(path, place); error != 0) {
        return {error, path};
    }
    mode_t mode = 0;
    int error = 0;
    const auto flag = immutableFlag(place, mode, error);
    if (error != 0) {
        return {error, path};
    }
    if (flag == (immutable ? Flag::Set : Flag::Clear)) {
        return {};
    }
    // Nothing else is opened: a pipe or a device may already do something then.
    error = S_ISREG(mode) || S_ISDIR(mode) ? changeFlag(place, immutable) : EOPNOTSUPP;
    if (!immutable && flag == Flag::Unknown) {
        return {}; // cannot be locked, or nobody can tell
    }
    return error == 0 ? FileError() : FileError(error, path);
}

} // namespace platform
