// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileReference.h"

#include "Platform/Core/Files/ItemPlace.h"
#include "Platform/Core/Text/FileName.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace platform {
namespace {

// Of the item itself; "/", "." and ".." are items, too. 0, else the reason (errno).
int readStatus(const QString &path, struct stat &status)
{
    ItemPlace place;
    const auto error = openPlace(path, place);
    if (error == 0) {
        return ::fstatat(place.folder.fd(), place.name.constData(), &status, AT_SYMLINK_NOFOLLOW) ==
                       0
                   ? 0
                   : errno;
    }
    const auto bytes = fileNameBytes(path);
    if (error != EINVAL || bytes.contains('\0')) {
        return error;
    }
    return ::stat(bytes.constData(), &status) == 0 ? 0 : errno;
}

} // namespace

std::optional<FileReference> makeFileReference(const QString &path)
{
    struct stat status {};
    if (readStatus(path, status) != 0) {
        return std::nullopt;
    }
    return FileReference{status.st_dev, status.st_ino, path};
}

int checkFileReference(const FileReference &reference)
{
    struct stat status {};
    if (const auto error = readStatus(reference.path, status); error != 0) {
        return error;
    }
    return status.st_dev == reference.device && status.st_ino == reference.inode ? 0 : ENOENT;
}

} // namespace platform
