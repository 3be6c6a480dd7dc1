// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/UnfinishedItem.h"

#include "Platform/Core/Basics/DescriptorPath.h"
#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Files/ItemPlace.h"
#include "Platform/Core/Trees/CopyAttributes.h"
#include "Platform/Core/Trees/RemoveItem.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <vector>

namespace platform {
namespace {

// The sticky bit is the mark: nobody else can give it to a folder of ours, such as one of root's
// that its neighbours rename to have it cleared away.
constexpr mode_t markedMode = S_ISVTX | S_IRWXU;
constexpr mode_t allModeBits = 07777;
constexpr mode_t comparedBits =
    allModeBits & ~mode_t(S_ISGID); // that one comes from the folder around
constexpr auto maxTries = 100;

// FUSE may be a network, or a file system of Windows; the kernel's header does not name these.
constexpr unsigned long ntfs = 0x5346544e;
constexpr unsigned long ntfs3 = 0x7366746e;
constexpr unsigned long cifs = 0xff534d42;
constexpr unsigned long vboxsf = 0x786f4256;
constexpr unsigned long hfs = 0x4244;
constexpr unsigned long udf = 0x15013346;

bool keepsOwnersAndLocks(int folder)
{
    constexpr std::array<unsigned long, 16> others{MSDOS_SUPER_MAGIC,
                                                   EXFAT_SUPER_MAGIC,
                                                   ntfs,
                                                   ntfs3,
                                                   cifs,
                                                   vboxsf,
                                                   hfs,
                                                   udf,
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

// A place is never a mount: what another serves may tell any owner.
bool isOnDeviceOf(int folder, const struct stat &place)
{
    struct stat status {};
    return ::fstat(folder, &status) == 0 && status.st_dev == place.st_dev;
}

bool isEmpty(int folder)
{
    return ::lseek(folder, 0, SEEK_SET) == 0 && !FolderEntries(folder).next();
}

void removeIfAbandoned(int folder, const QByteArray &name)
{
    const auto left = openFolder(folder, name.constData());
    struct stat status {};
    if (!left.isOpen() || ::fstat(left.fd(), &status) != 0 || !isOnDeviceOf(folder, status) ||
        status.st_uid != ::geteuid() || (status.st_mode & comparedBits) != markedMode ||
        lock(left.fd()) != 0 || !hasName(status, folder, name)) {
        return;
    }
    removeOpenFolder(folder, name, left.fd(), {});
}

// A folder may not be moved out of another one by an ordinary user whom its mode forbids to write.
int renameClosedFolder(int from, int to, const QByteArray &name)
{
    const Descriptor item(retried([&] {
        return ::openat(from, UnfinishedItem::name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    }));
    struct stat status {};
    if (!item.isOpen() || ::fstat(item.fd(), &status) != 0 || status.st_uid != ::geteuid()) {
        return EACCES;
    }
    const auto path = pathOfDescriptor(item.fd());
    if (::chmod(path.constData(), status.st_mode | S_IRWXU) != 0) {
        return errno;
    }
    const auto error = renameInPlace(from, UnfinishedItem::name, to, name);
    return ::chmod(path.constData(), status.st_mode) == 0 || error != 0 ? error : errno;
}

// The folders that were looked through last, so that a large one is not read for each of many
// files. Two: a move has one where it takes and one where it puts.
class RecentScans {
public:
    // Whether that was a moment ago, and it has as many folders in it now as then.
    bool isRecent(const struct stat &folder)
    {
        const std::lock_guard lock(m_mutex);
        const auto now = Clock::now();
        auto *scan = m_scans.data();
        for (auto &other : m_scans) {
            if (other.folder.st_dev == folder.st_dev && other.folder.st_ino == folder.st_ino) {
                scan = &other;
                break;
            }
            scan = other.time < scan->time ? &other : scan;
        }
        if (scan->folder.st_dev == folder.st_dev && scan->folder.st_ino == folder.st_ino &&
            scan->folder.st_nlink == folder.st_nlink &&
            now - scan->time < std::chrono::seconds(1)) {
            return true;
        }
        *scan = {folder, now};
        return false;
    }

private:
    using Clock = std::chrono::steady_clock;
    struct Scan {
        struct stat folder {};
        Clock::time_point time;
    };

    std::mutex m_mutex;
    std::array<Scan, 2> m_scans;
};

} // namespace

UnfinishedItem::~UnfinishedItem()
{
    if (m_place.isOpen()) {
        removeOpenFolder(m_folder, m_placeName, m_place.fd(), {});
    }
}

// 0, else the reason (errno): EAGAIN where somebody has taken it for one that was left.
int UnfinishedItem::prepare() const
{
    const auto place = m_place.fd();
    struct stat status {};
    if (::fstat(place, &status) != 0) {
        return errno;
    }
    if (!isOnDeviceOf(m_folder, status)) {
        return EACCES;
    }
    // What the folder around it hands down would open what is in it to others.
    if (const auto error = clearAccessLists(place); error != 0) {
        return error;
    }
    if (!keepsOwnersAndLocks(place)) {
        return 0;
    }
    // By name it could be another one by now.
    if (status.st_uid != ::geteuid() || !isEmpty(place)) {
        return EACCES;
    }
    if (const auto error = lock(place); error != 0) {
        return error == EWOULDBLOCK ? EAGAIN : error;
    }
    if ((status.st_mode & comparedBits) != markedMode) {
        if (::fchmod(place, markedMode | (status.st_mode & S_ISGID)) != 0) {
            return errno;
        }
        if (!isEmpty(place)) { // somebody could put something in before
            return EACCES;
        }
    }
    return hasName(status, m_folder, m_placeName) ? 0 : EAGAIN;
}

int UnfinishedItem::create(int folder)
{
    clearUnfinishedItems(folder);
    m_folder = folder;
    int error = EAGAIN;
    for (int i = 0; error == EAGAIN && i < maxTries; ++i) {
        m_placeName = temporaryName();
        if (::mkdirat(folder, m_placeName.constData(), markedMode) != 0) {
            return errno;
        }
        m_place = openFolder(folder, m_placeName.constData());
        error = m_place.isOpen() ? prepare() : errno == ENOENT ? EAGAIN : errno;
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

Removal removeAtOnce(int folder, const QByteArray &name, int open, const QString &path)
{
    struct stat status {};
    if (::fstat(open, &status) != 0) {
        return {{errno, path}, false};
    }
    const auto aside = temporaryName();
    if (!hasName(status, folder, name)) {
        return {{ENOENT, path}, false};
    }
    const auto error = renameInPlace(folder, name, folder, aside);
    if (error == EXDEV) { // a folder of a lower layer of overlayfs keeps its name
        return removeOpenFolder(folder, name, open, path);
    }
    if (error != 0) {
        return {{error, path}, false};
    }
    // From here on it may be cleared by others when this process ends.
    const auto isMarked = lock(open) == 0 && ::fchmod(open, markedMode) == 0;
    auto removal = removeOpenFolder(folder, aside, open, path);
    if (removal.error) {
        // Some of it may have come in meanwhile and be in no copy: it is not for others to clear.
        if (isMarked) {
            ::fchmod(open, status.st_mode & allModeBits);
        }
        if (!removal.hasRemovedAnything || removal.error.code() == ENOTEMPTY) {
            renameInPlace(folder, aside, folder, name);
        }
    }
    return removal;
}

void clearUnfinishedItems(int folder)
{
    constexpr nlink_t withoutFolders = 2; // where the file system counts them
    const auto listed = openFolder(folder, ".");
    struct stat status {};
    if (!listed.isOpen() || ::fstat(listed.fd(), &status) != 0 ||
        status.st_nlink == withoutFolders || !keepsOwnersAndLocks(listed.fd())) {
        return;
    }
    std::vector<QByteArray> left;
    for (FolderEntries entries(listed.fd()); entries.next();) {
        if ((entries.type() == DT_DIR || entries.type() == DT_UNKNOWN) &&
            isTemporaryName(entries.name())) {
            left.emplace_back(entries.name());
        }
    }
    for (const auto &name : left) {
        removeIfAbandoned(folder, name);
    }
}

void clearUnfinishedItemsUnlessRecent(int folder)
{
    static RecentScans recentScans;
    struct stat status {};
    if (::fstat(folder, &status) == 0 && !recentScans.isRecent(status)) {
        clearUnfinishedItems(folder);
    }
}

} // namespace platform
