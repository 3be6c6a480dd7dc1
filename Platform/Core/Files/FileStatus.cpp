// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileStatus.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/DescriptorPath.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Files/ItemPlace.h"
#include "Platform/Core/Files/OpenPath.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Text/PathText.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <vector>

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

// Of an item that is open with O_PATH.
Flag immutableFlag(int item, mode_t &mode, int &error)
{
    struct statx status {};
    error = ::statx(item, "", AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW, STATX_TYPE, &status) == 0
                ? 0
                : errno;
    mode = status.stx_mode;
    if (error != 0 || (status.stx_attributes_mask & STATX_ATTR_IMMUTABLE) == 0) {
        return Flag::Unknown;
    }
    return (status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0 ? Flag::Set : Flag::Clear;
}

// 0, else the reason (errno).
int changeFlag(int item, bool immutable)
{
    const Descriptor file(retried([&] {
        return ::open(pathOfDescriptor(item).constData(),
                      O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }));
    int flags = 0; // the kernel's interface says long and means int
    if (!file.isOpen() || ::ioctl(file.fd(), FS_IOC_GETFLAGS, &flags) != 0) {
        return errno;
    }
    const auto wanted = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    if (wanted == flags || ::ioctl(file.fd(), FS_IOC_SETFLAGS, &wanted) == 0) {
        return 0;
    }
    return errno;
}

// 0, else the reason (errno).
int setFlag(int item, bool immutable)
{
    mode_t mode = 0;
    int error = 0;
    const auto flag = immutableFlag(item, mode, error);
    if (error != 0 || flag == (immutable ? Flag::Set : Flag::Clear)) {
        return error;
    }
    // Nothing else is opened: a pipe or a device may already do something then.
    error = S_ISREG(mode) || S_ISDIR(mode) ? changeFlag(item, immutable) : EOPNOTSUPP;
    // Where it cannot be locked, or nobody can tell, there is nothing to clear.
    return !immutable && flag == Flag::Unknown ? 0 : error;
}

int openItem(const QString &path, Descriptor &item)
{
    ItemPlace place;
    const auto error = openPlace(path, place);
    return error != 0 ? error : openPath(place.folder.fd(), place.name, LastLink::Keep, item);
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as the folders are, one of them open at each level
void setFlagBelow(int folder, const QString &path, bool immutable, const Report &report)
{
    std::vector<QByteArray> names;
    readNames(folder, names);
    for (const auto &name : names) {
        const auto below = appendingPathComponent(path, fileNameFromBytes(name));
        Descriptor item;
        struct stat status {};
        auto error = openPath(folder, name, LastLink::Keep, item);
        if (error == 0 && ::fstat(item.fd(), &status) != 0) {
            error = errno;
        }
        if (error == 0 && !S_ISDIR(status.st_mode)) {
            error = setFlag(item.fd(), immutable);
        } else if (error == 0) {
            const Descriptor entered(retried(
                [&] { return ::openat(item.fd(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
            item.close();
            if (entered.isOpen()) {
                setFlagBelow(entered.fd(), below, immutable, report);
            }
        }
        if (error != 0) {
            report({error, below});
        }
    }
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

bool isMissing(const QString &path)
{
    struct stat status {};
    const auto error =
        path.contains(QChar(0)) ? ENOENT : readStatus(path, AT_SYMLINK_NOFOLLOW, status);
    return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG || error == ELOOP;
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
    Descriptor item;
    mode_t mode = 0;
    int error = 0;
    return openItem(path, item) == 0 && immutableFlag(item.fd(), mode, error) == Flag::Set;
}

FileError setImmutable(const QString &path, bool immutable)
{
    Descriptor item;
    auto error = openItem(path, item);
    if (error == 0) {
        error = setFlag(item.fd(), immutable);
    }
    return error == 0 ? FileError() : FileError(error, path);
}

void setImmutableBelow(const QString &path, bool immutable, const Report &report)
{
    Descriptor top;
    if (openPath(AT_FDCWD, fileNameBytes(path), LastLink::Follow, top) != 0) {
        return;
    }
    const Descriptor folder(
        retried([&] { return ::openat(top.fd(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (folder.isOpen()) {
        setFlagBelow(folder.fd(), path, immutable, report);
    }
}

} // namespace platform
