// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/CopyAttributes.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/DescriptorPath.h"
#include "Platform/Core/Basics/FileError.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

namespace platform {
namespace {

constexpr mode_t allModeBits = 07777;
constexpr auto *accessList = "system.posix_acl_access";
constexpr std::size_t listMax = 65536; // the kernel gives no more

bool mayBeLeftOut(int error)
{
    return error == EOPNOTSUPP || error == EPERM || error == EACCES || error == EINVAL ||
           error == ENODATA;
}

using Value = std::vector<char>;

// What the access control list gives to the owning group, where the copy cannot have that list: the
// group bits of the mode are then those of all that it names together.
mode_t withoutList(mode_t mode, const Value &list)
{
    constexpr std::size_t header = 4;
    constexpr std::uint16_t owningGroup = 4;
    struct Entry {
        std::uint16_t tag;
        std::uint16_t permissions;
        std::uint32_t id;
    };
    for (auto at = header; at + sizeof(Entry) <= list.size(); at += sizeof(Entry)) {
        Entry entry{};
        std::memcpy(&entry, list.data() + at, sizeof entry);
        if (entry.tag == owningGroup) {
            const auto bits = static_cast<mode_t>(entry.permissions & 7U) << 3U;
            return (mode & ~static_cast<mode_t>(S_IRWXG)) | (mode & bits);
        }
    }
    return mode;
}

int copyExtendedAttribute(int from, int to, const char *name, mode_t &mode)
{
    auto size = ::fgetxattr(from, name, nullptr, 0);
    Value value(size > 0 ? static_cast<std::size_t>(size) : 0);
    if (size > 0) {
        size = ::fgetxattr(from, name, value.data(), value.size());
    }
    if (size >= 0 && ::fsetxattr(to, name, value.data(), static_cast<std::size_t>(size), 0) == 0) {
        return 0;
    }
    if (!mayBeLeftOut(errno)) {
        return errno;
    }
    if (size > 0 && std::strcmp(name, accessList) == 0) {
        mode = withoutList(mode, value);
    }
    return 0;
}

int copyExtendedAttributes(int from, int to, mode_t &mode)
{
    std::array<char, 1024> few{};
    Value many;
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
        if (const auto error = copyExtendedAttribute(from, to, name, mode); error != 0) {
            return error;
        }
    }
    return 0;
}

std::array<timespec, 2> timesOf(const struct stat &status)
{
    return {status.st_atim, status.st_mtim};
}

// Whether bits that hand out an owner's rights may be given to a copy with that owner: the system
// takes them away as soon as somebody else writes, which must not have been while it was copied.
bool hasKeptItsRights(int from, const struct stat &status)
{
    struct stat now {};
    return ::fstat(from, &now) == 0 && now.st_mode == status.st_mode &&
           now.st_uid == status.st_uid && now.st_gid == status.st_gid;
}

// With another owner they would hand out his rights, not the original's.
bool hasOwnerOf(const struct stat &status, int to)
{
    struct stat copy {};
    return ::fstat(to, &copy) == 0 && copy.st_uid == status.st_uid && copy.st_gid == status.st_gid;
}

} // namespace

int copyAttributes(int from, const struct stat &status, int to)
{
    auto mode = status.st_mode & allModeBits;
    if (::geteuid() == 0 && ::fchown(to, status.st_uid, status.st_gid) != 0) {
        // In a container the owner may be one that cannot be given.
    }
    if ((mode & (S_ISUID | S_ISGID)) != 0 &&
        (!hasOwnerOf(status, to) || !hasKeptItsRights(from, status))) {
        mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
    }
    if (const auto error = copyExtendedAttributes(from, to, mode); error != 0) {
        return error;
    }
    if (::fchmod(to, mode) != 0 && errno != EPERM && errno != EOPNOTSUPP) {
        return errno;
    }
    const auto times = timesOf(status);
    return ::futimens(to, times.data()) == 0 || errno == EPERM ? 0 : errno;
}

int copyAttributesOfSpecial(const struct stat &status, int folder, const char *name)
{
    const Descriptor item(
        retried([&] { return ::openat(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC); }));
    struct stat made {};
    if (!item.isOpen() || ::fstat(item.fd(), &made) != 0) {
        return errno;
    }
    if ((made.st_mode & S_IFMT) != (status.st_mode & S_IFMT) || made.st_rdev != status.st_rdev) {
        return ESTALE; // replaced by something else meanwhile
    }
    if (::geteuid() == 0 && ::fchownat(item.fd(), "", status.st_uid, status.st_gid,
                                       AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW) != 0) {
        // In a container the owner may be one that cannot be given.
    }
    if (!S_ISLNK(status.st_mode)) {
        ::chmod(pathOfDescriptor(item.fd()).constData(), status.st_mode & allModeBits);
    }
    const auto times = timesOf(status);
    ::utimensat(item.fd(), "", times.data(), AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW);
    return 0;
}

int clearAccessLists(int item)
{
    for (const auto *list : {"system.posix_acl_default", accessList}) {
        // Of a file, of a file system without lists, of one that knows other attributes only, of
        // one that says that what we make is another's (EPERM): it inherits no list of ours.
        if (::fremovexattr(item, list) != 0 && errno != ENODATA && errno != EACCES &&
            errno != EOPNOTSUPP && errno != EINVAL && errno != ENOSYS && errno != EPERM) {
            return errno;
        }
    }
    return 0;
}

} // namespace platform
