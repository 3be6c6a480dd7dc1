// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/CopyAttributes.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <vector>

namespace platform {
namespace {

constexpr mode_t allModeBits = 07777;
constexpr std::size_t listMax = 65536; // the kernel gives no more

bool mayBeLeftOut(int error)
{
    return error == EOPNOTSUPP || error == EPERM || error == EACCES || error == EINVAL ||
           error == ENODATA;
}

int copyExtendedAttribute(int from, int to, const char *name)
{
    auto size = ::fgetxattr(from, name, nullptr, 0);
    std::vector<char> value(size > 0 ? static_cast<std::size_t>(size) : 0);
    if (size > 0) {
        size = ::fgetxattr(from, name, value.data(), value.size());
    }
    if (size < 0 || ::fsetxattr(to, name, value.data(), static_cast<std::size_t>(size), 0) != 0) {
        return mayBeLeftOut(errno) ? 0 : errno;
    }
    return 0;
}

int copyExtendedAttributes(int from, int to)
{
    std::array<char, 1024> few{};
    std::vector<char> many;
    auto *names = few.data();
    auto size = ::flistxattr(from, names, few.size());
    if (size < 0 && errno == ERANGE) {
        many.resize(listMax);
        names = many.data();
        size = ::flistxattr(from, names, many.size());
    }
    if (size < 0) {
        return mayBeLeftOut(errno) ? 0 : errno;
    }
    for (const auto *name = names; name < names + size; name += std::strlen(name) + 1) {
        if (const auto error = copyExtendedAttribute(from, to, name); error != 0) {
            return error;
        }
    }
    return 0;
}

std::array<timespec, 2> timesOf(const struct stat &status)
{
    return {status.st_atim, status.st_mtim};
}

} // namespace

int copyAttributes(int from, const struct stat &status, int to)
{
    if (const auto error = copyExtendedAttributes(from, to); error != 0) {
        return error;
    }
    auto mode = status.st_mode & allModeBits;
    const auto isRoot = ::geteuid() == 0;
    const auto given = isRoot && ::fchown(to, status.st_uid, status.st_gid) == 0;
    if (!given && (mode & (S_ISUID | S_ISGID)) != 0) {
        // With another owner these bits would hand out his rights, not the original's.
        struct stat copy {};
        if (::fstat(to, &copy) != 0 || copy.st_uid != status.st_uid ||
            copy.st_gid != status.st_gid) {
            mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
        }
    }
    if (::fchmod(to, mode) != 0 && errno != EPERM && errno != EOPNOTSUPP) {
        return errno;
    }
    const auto times = timesOf(status);
    return ::futimens(to, times.data()) == 0 || errno == EPERM ? 0 : errno;
}

void copyAttributesOfSpecial(const struct stat &status, int folder, const char *name)
{
    if (::geteuid() == 0 &&
        ::fchownat(folder, name, status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW) != 0) {
        // In a container the owner may be one that cannot be given.
    }
    if (!S_ISLNK(status.st_mode)) {
        ::fchmodat(folder, name, status.st_mode & allModeBits, 0);
    }
    const auto times = timesOf(status);
    ::utimensat(folder, name, times.data(), AT_SYMLINK_NOFOLLOW);
}

} // namespace platform
