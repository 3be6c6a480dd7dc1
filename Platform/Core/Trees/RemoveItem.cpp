// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/RemoveItem.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/DescriptorPath.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Files/ItemPlace.h"
#include "Platform/Core/Text/FileName.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace platform {
namespace {

constexpr mode_t allModeBits = 07777;

bool isSame(const struct stat &one, const struct stat &other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Whether it is for us to open it to ourselves.
bool isOwnAndClosed(const struct stat &status)
{
    return status.st_uid == ::geteuid() && (status.st_mode & S_IRWXU) != S_IRWXU;
}

Descriptor openToRead(int folder, const char *name)
{
    return Descriptor(retried([&] {
        return ::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    }));
}

// One that we may not read, though it is ours. Closed, with errno, where that does not help.
Descriptor openOwnFolder(int folder, const char *name, struct stat &status)
{
    const Descriptor pinned(retried(
        [&] { return ::openat(folder, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
    if (!pinned.isOpen() || ::fstat(pinned.fd(), &status) != 0) {
        return {};
    }
    if (!isOwnAndClosed(status)) {
        errno = EACCES;
        return {};
    }
    const auto path = pathOfDescriptor(pinned.fd());
    if (::chmod(path.constData(), (status.st_mode & allModeBits) | S_IRWXU) != 0) {
        return {};
    }
    auto open = openToRead(pinned.fd(), ".");
    if (!open.isOpen()) {
        const auto error = errno;
        ::chmod(path.constData(), status.st_mode & allModeBits);
        errno = error;
    }
    return open;
}

// Goes through a tree with one folder open at a time, so that it can be of any depth: the way back
// up is "..", which must be the folder that was left.
class TreeRemoval {
public:
    TreeRemoval(int folder, QByteArray name, QString path)
        : m_outside(folder), m_topName(std::move(name)), m_path(std::move(path))
    {
    }

    Removal run();
    Removal run(int open);

private:
    struct Level {
        QByteArray name;
        struct stat status {};           // as it was
        std::vector<QByteArray> folders; // still to be removed
    };

    void fail(int error, const QByteArray &name = {});
    bool unlink(int folder, const QByteArray &name, int flags);
    bool enter(int folder, const QByteArray &name);
    void goInto(Descriptor folder, Level level);
    void removeFiles();
    void removeAll();
    bool leave();
    bool removeLeft(int above, const Level &level, int left);

    int m_outside;
    QByteArray m_topName;
    QString m_path;
    Removal m_removal;
    Descriptor m_current;
    std::vector<Level> m_levels;
};

void TreeRemoval::fail(int error, const QByteArray &name)
{
    if (m_removal.error) {
        return;
    }
    auto path = fileNameBytes(m_path);
    for (const auto &level : m_levels) {
        path += '/' + level.name;
    }
    m_removal.error = {error, fileNameFromBytes(name.isNull() ? path : path + '/' + name)};
}

bool TreeRemoval::unlink(int folder, const QByteArray &name, int flags)
{
    if (::unlinkat(folder, name.constData(), flags) == 0) {
        m_removal.hasRemovedAnything = true;
        return true;
    }
    return errno == ENOENT;
}

bool TreeRemoval::enter(int folder, const QByteArray &name)
{
    Level level{name, {}, {}};
    auto entered = openToRead(folder, name.constData());
    if (!entered.isOpen() && errno == EACCES) {
        entered = openOwnFolder(folder, name.constData(), level.status);
    } else if (entered.isOpen() && ::fstat(entered.fd(), &level.status) != 0) {
        entered.close();
    }
    if (!entered.isOpen()) {
        const auto error = errno;
        // An empty folder need not be readable.
        if (!unlink(folder, name, AT_REMOVEDIR)) {
            fail(error, name);
        }
        return false;
    }
    goInto(std::move(entered), std::move(level));
    return true;
}

void TreeRemoval::goInto(Descriptor folder, Level level)
{
    if (isOwnAndClosed(level.status)) {
        ::fchmod(folder.fd(), level.status.st_mode | S_IRWXU);
    }
    m_current = std::move(folder);
    m_levels.push_back(std::move(level));
}

void TreeRemoval::removeFiles()
{
    // All names first: what a folder lists while it is being changed is not defined.
    std::vector<QByteArray> files;
    auto &folders = m_levels.back().folders;
    FolderEntries entries(m_current.fd());
    while (entries.next()) {
        (entries.type() == DT_DIR ? folders : files).emplace_back(entries.name());
    }
    if (entries.error() != 0) {
        fail(entries.error());
    }
    for (const auto &name : files) {
        if (unlink(m_current.fd(), name, 0)) {
            continue;
        }
        if (errno == EISDIR) {
            folders.push_back(name);
        } else {
            fail(errno, name);
        }
    }
}

// Removes the folder that was left, under its name, unless that is another one's by now.
bool TreeRemoval::removeLeft(int above, const Level &level, int left)
{
    struct stat named {};
    if (::fstatat(above, level.name.constData(), &named, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno == ENOENT;
    }
    if (!isSame(named, level.status)) {
        errno = ENOENT; // somebody has moved it away meanwhile
        return false;
    }
    if (unlink(above, level.name, AT_REMOVEDIR)) {
        return true;
    }
    const auto error = errno;
    if (isOwnAndClosed(level.status)) {
        ::chmod(pathOfDescriptor(left).constData(), level.status.st_mode & allModeBits);
    }
    errno = error;
    return false;
}

// Back to the folder above, and removes the one that was left. False where the way is lost.
bool TreeRemoval::leave()
{
    const auto level = std::move(m_levels.back());
    m_levels.pop_back();
    const auto left = std::move(m_current);
    if (m_levels.empty()) {
        if (removeLeft(m_outside, level, left.fd())) {
            m_removal.error = {}; // all is gone, whatever it was
        } else {
            fail(errno, level.name);
        }
        return true;
    }
    m_current = Descriptor(
        retried([&] { return ::openat(left.fd(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC); }));
    struct stat status {};
    if (!m_current.isOpen() || ::fstat(m_current.fd(), &status) != 0) {
        fail(errno, level.name);
        return false;
    }
    if (!isSame(status, m_levels.back().status)) {
        fail(ENOENT, level.name);
        return false;
    }
    if (!removeLeft(m_current.fd(), level, left.fd())) {
        fail(errno, level.name);
    }
    return true;
}

void TreeRemoval::removeAll()
{
    removeFiles();
    for (auto onTheWay = true; onTheWay && !m_levels.empty();) {
        auto &folders = m_levels.back().folders;
        if (folders.empty()) {
            onTheWay = leave();
            continue;
        }
        const auto next = std::move(folders.back());
        folders.pop_back();
        if (enter(m_current.fd(), next)) {
            removeFiles();
        }
    }
}

Removal TreeRemoval::run()
{
    if (::unlinkat(m_outside, m_topName.constData(), 0) == 0) {
        m_removal.hasRemovedAnything = true;
    } else if (errno != EISDIR) {
        fail(errno, m_topName);
    } else if (enter(m_outside, m_topName)) {
        removeAll();
    }
    return m_removal;
}

Removal TreeRemoval::run(int open)
{
    Level level{m_topName, {}, {}};
    auto own = openToRead(open, ".");
    if (!own.isOpen() || ::fstat(own.fd(), &level.status) != 0) {
        fail(errno, m_topName);
    } else {
        goInto(std::move(own), std::move(level));
        removeAll();
    }
    return m_removal;
}

} // namespace

Removal removeOpenFolder(int folder, const QByteArray &name, int open, const QString &folderPath)
{
    return TreeRemoval(folder, name, folderPath).run(open);
}

FileError removeItem(const QString &path)
{
    ItemPlace place;
    if (const auto error = openPlace(path, place); error != 0) {
        return {error, path};
    }
    const auto end = path.lastIndexOf(fileNameFromBytes(place.name));
    const auto folder = end == 0 ? QStringLiteral(".") : path.left(end - 1);
    return TreeRemoval(place.folder.fd(), place.name, folder).run().error;
}

} // namespace platform
