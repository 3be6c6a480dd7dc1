// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/ReplaceableFile.h"

#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Text/FileName.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

namespace platform {
namespace {

constexpr auto maxLinks = 40; // as the system follows
constexpr mode_t permissions = 0777;

} // namespace

QString findReplaceable(const QString &path, ReplaceableFile &file)
{
    auto name = path;
    for (int i = 0; i < maxLinks; ++i) {
        if (const auto error = openPlace(name, file.place); error != 0) {
            return FileError(error, path).reason();
        }
        const auto folder = file.place.folder.fd();
        const auto *const inFolder = file.place.name.constData();
        if (::fstatat(folder, inFolder, &file.status, AT_SYMLINK_NOFOLLOW) != 0) {
            file.exists = false;
            return errno == ENOENT ? QString() : FileError(errno, path).reason();
        }
        if (!S_ISLNK(file.status.st_mode)) {
            file.exists = true;
            return S_ISREG(file.status.st_mode) ? QString()
                                                : QStringLiteral("This is not a regular file.");
        }
        if (file.status.st_uid != ::geteuid() && file.status.st_uid != 0) {
            return QStringLiteral("The symbolic link belongs to another user.");
        }
        std::array<char, PATH_MAX> target{};
        const auto size = ::readlinkat(folder, inFolder, target.data(), target.size());
        if (size < 0) {
            return FileError(errno, path).reason();
        }
        const auto next = fileNameFromBytes(QByteArray(target.data(), static_cast<int>(size)));
        name = next.startsWith(u'/') ? next : name.left(name.lastIndexOf(u'/') + 1) + next;
    }
    return FileError(ELOOP, path).reason();
}

void giveToOwnerOfFolder(int folder, int item)
{
    struct stat status {};
    if (::geteuid() == 0 && ::fstat(folder, &status) == 0 && status.st_uid != 0 &&
        ::fchown(item, status.st_uid, status.st_gid) != 0) {
        // In a container the owner may be one that cannot be given.
    }
}

int takeOver(const struct stat &old, int file)
{
    if (::geteuid() == 0 && ::fchown(file, old.st_uid, old.st_gid) != 0) {
        // In a container the owner may be one that cannot be given; the file is worth more.
    }
    // Who could not read what was written would take it for nothing, and write that.
    const auto mode = (old.st_mode & permissions) | S_IRUSR;
    return ::fchmod(file, mode) == 0 || errno == EPERM ? 0 : errno;
}

} // namespace platform
