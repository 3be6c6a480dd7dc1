// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/ItemPlace.h"

#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/OpenPath.h"
#include "Platform/Core/Text/FileName.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace platform {
namespace {
constexpr auto *temporaryBeginning = ".unfinished-";
} // namespace

int openPlace(const QString &path, ItemPlace &place)
{
    if (path.isEmpty()) {
        return ENOENT;
    }
    auto bytes = fileNameBytes(path);
    if (bytes.contains('\0')) {
        return EINVAL;
    }
    while (bytes.endsWith('/')) {
        bytes.chop(1);
    }
    const auto slash = bytes.lastIndexOf('/');
    place.name = bytes.mid(slash + 1);
    if (place.name.isEmpty() || place.name == "." || place.name == "..") {
        return EINVAL;
    }
    const auto folder = slash < 0    ? QByteArray(".")
                        : slash == 0 ? QByteArray("/")
                                     : bytes.left(slash);
    if (const auto error = openPath(AT_FDCWD, folder, LastLink::Follow, place.folder); error != 0) {
        return error;
    }
    struct stat status {};
    if (::fstat(place.folder.fd(), &status) != 0) {
        return errno;
    }
    return S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
}

QByteArray temporaryName()
{
    std::uint64_t number = 0;
    if (::getrandom(&number, sizeof number, GRND_NONBLOCK) != static_cast<ssize_t>(sizeof number)) {
        timespec now{};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        number = static_cast<std::uint64_t>(now.tv_nsec) * 1000003U +
                 static_cast<std::uint64_t>(now.tv_sec);
    }
    return temporaryBeginning + QByteArray::number(static_cast<qulonglong>(number), 36);
}

bool isTemporaryName(const char *name)
{
    return std::strncmp(name, temporaryBeginning, std::strlen(temporaryBeginning)) == 0;
}

int renameInPlace(int fromFolder, const QByteArray &from, int toFolder, const QByteArray &to)
{
    if (::renameat2(fromFolder, from.constData(), toFolder, to.constData(), RENAME_NOREPLACE) ==
        0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    // Network file systems do not know how. (EINVAL also says: a folder into itself.)
    struct stat status {};
    if (::fstatat(toFolder, to.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        return EEXIST;
    }
    if (errno != ENOENT) {
        return errno;
    }
    return ::renameat(fromFolder, from.constData(), toFolder, to.constData()) == 0 ? 0 : errno;
}

} // namespace platform
