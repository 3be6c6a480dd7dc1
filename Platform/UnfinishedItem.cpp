// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/UnfinishedItem.h"

#include "Platform/DescriptorPath.h"
#include "Platform/FileError.h"
#include "Platform/FolderEntries.h"
#include "Platform/ItemPlace.h"
#include "Platform/RemoveItem.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <vector>

namespace platform {
namespace {

// The sticky bit is the mark: nobody else can give it to a folder of ours, such as one of root's
// that its neighbours rename to have it cleared away.
constexpr mode_t markedMode = S_ISVTX | S_IRWXU;
constexpr mode_t comparedBits = 07777 & ~S_ISGID; // that one comes from the folder around
constexpr auto mostTries = 20;

// FUSE may be a network, or a file system of Windows; the kernel's header does not name these.
constexpr unsigned long ntfs = 0x5346544e;
constexpr unsigned long ntfs3 = 0x7366746e;
constexpr unsigned long cifs = 0xff534d42;

bool keepsOwnersAndLocks(int folder)
{
    constexpr std::array<unsigned long, 13> others{MSDOS_SUPER_MAGIC,
                                                   EXFAT_SUPER_MAGIC,
                                                   ntfs,
                                                   ntfs3,
                                                   cifs,
                                                   SMB_SUPER_MAGIC,
                                                   SMB2_SUPER_MAGIC,
                                                   NFS_SUPER_MAGIC,
                                                   FUSE_SUPER_MAGIC,
                                                   V9FS_MAGIC,
                                                   CEPH_SUPER_MAGIC,
                                                   AFS_SUPER_MAGIC,
                                                   CODA_SUPER_MAGIC};
    struct statfs status {};
    return ::fstatfs(folder, &status) == 0 &&
           std::find(others.begin(), others.end(),
                     static_cast<unsigned long>(status.f_type) & 0xffffffffU) == others.end();
}

Descriptor openFolder(int folder, const char *name)
{
    return Descriptor(retried([&] {
        return ::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    }));
}

int lock(int folder)
{
    return retried([&] { return ::flock(folder, LOCK_EX | LOCK_NB); }) == 0 ? 0 : errno;
}

bool hasName(const struct stat &status, int folder, const QByteArray &name)
{
    struct stat named {};
    return ::fstatat(folder, name.constData(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           named.st_dev == status.st_dev && named.st_ino == status.st_ino;
}

void clearIfLeft(int folder, const QByteArray &name)
{
    const auto left = openFolder(folder, name.constData());
    struct stat status {};
    if (!left.isOpen() || ::fstat(left.number(), &status) != 0 || status.st_uid != ::geteuid() ||
        (status.st_mode & comparedBits) != markedMode || lock(left.number()) != 0 ||
        !hasName(status, folder, name)) {
        return;
    }
    removeOpenFolder(folder, name, left.number(), {});
}

// A folder may not be moved out of another one by an ordinary user whom its mode forbids to write.
int renameClosedFolder(int from, int to, const QByteArray &name)
{
    const Descriptor item(retried([&] {
        return ::openat(from, UnfinishedItem::name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    }));
    struct stat status {};
    if (!item.isOpen() || ::fstat(item.number(), &status) != 0 || status.st_uid != ::geteuid()) {
        return EACCES;
    }
    const auto path = pathOfDescriptor(item.number());
    if (::chmod(path.constData(), status.st_mode | S_IRWXU) != 0) {
        return errno;
    }
    const auto error = renameInPlace(from, UnfinishedItem::name, to, name);
    return ::chmod(path.constData(), status.st_mode) == 0 || error != 0 ? error : errno;
}

} // namespace

UnfinishedItem::~UnfinishedItem()
{
    if (m_place.isOpen()) {
        removeOpenFolder(m_folder, m_placeName, m_place.number(), {});
    }
}

// 0, else the reason (errno): EAGAIN where somebody has taken it for one that was left.
int UnfinishedItem::prepare() const
{
    const auto place = m_place.number();
    // What the folder around it hands down would open what is in it to others.
    for (const auto *list : {"system.posix_acl_default", "system.posix_acl_access"}) {
        if (::fremovexattr(place, list) != 0 && errno != ENODATA && errno != EOPNOTSUPP) {
            return errno;
        }
    }
    if (!keepsOwnersAndLocks(place)) {
        return 0;
    }
    struct stat status {};
    if (::fstat(place, &status) != 0) {
        return errno;
    }
    // By name it could be another one by now.
    if (status.st_uid != ::geteuid() || FolderEntries(place).next()) {
        return EACCES;
    }
    const auto error = lock(place);
    if (error == EWOULDBLOCK) {
        return EAGAIN;
    }
    if (error == 0 && (status.st_mode & comparedBits) != markedMode &&
        ::fchmod(place, markedMode | (status.st_mode & S_ISGID)) != 0) {
        return errno;
    }
    return error != 0 || hasName(status, m_folder, m_placeName) ? error : EAGAIN;
}

int UnfinishedItem::create(int folder)
{
    clearUnfinishedItems(folder);
    m_folder = folder;
    int error = EAGAIN;
    for (int i = 0; error == EAGAIN && i < mostTries; ++i) {
        m_placeName = temporaryName();
        if (::mkdirat(folder, m_placeName.constData(), markedMode) != 0) {
            return errno;
        }
        m_place = openFolder(folder, m_placeName.constData());
        error = m_place.isOpen() ? prepare() : errno;
        if (error != 0) {
            m_place.close();
            ::unlinkat(folder, m_placeName.constData(), AT_REMOVEDIR); // nothing, unless empty
        }
    }
    return error;
}

int UnfinishedItem::publish(const QByteArray &finalName)
{
    auto error = renameInPlace(folder(), name, m_folder, finalName);
    if (error == EACCES) {
        error = renameClosedFolder(folder(), m_folder, finalName);
    }
    if (error == 0) {
        ::unlinkat(m_folder, m_placeName.constData(), AT_REMOVEDIR);
        m_place.close();
    }
    return error;
}

void clearUnfinishedItems(int folder)
{
    const auto listed = openFolder(folder, ".");
    if (!listed.isOpen() || !keepsOwnersAndLocks(listed.number())) {
        return;
    }
    std::vector<QByteArray> left;
    for (FolderEntries entries(listed.number()); entries.next();) {
        if ((entries.type() == DT_DIR || entries.type() == DT_UNKNOWN) &&
            isTemporaryName(entries.name())) {
            left.emplace_back(entries.name());
        }
    }
    for (const auto &name : left) {
        clearIfLeft(folder, name);
    }
}

} // namespace platform
