// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/RemoveItem.h"

#include "Platform/Descriptor.h"
#include "Platform/FileName.h"
#include "Platform/FolderEntries.h"
#include "Platform/ItemPlace.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace platform {
namespace {

// Goes through a tree with one folder open at a time, so that it can be of any depth: the way back
// up is "..", which must be the folder that was left.
class TreeRemoval {
public:
    TreeRemoval(int folder, QByteArray name, QString path, Obstinacy obstinacy)
        : m_outside(folder), m_topName(std::move(name)), m_path(std::move(path)),
          m_obstinacy(obstinacy)
    {
    }

    Removal run();

private:
    struct Level {
        QByteArray name;
        dev_t device = 0;
        ino_t inode = 0;
        std::vector<QByteArray> folders; // still to be removed
    };

    void fail(int error, const QByteArray &name = {});
    bool unlink(int folder, const QByteArray &name, int flags);
    bool enter(int folder, const QByteArray &name);
    void removeFiles();
    bool leave();

    int m_outside;
    QByteArray m_topName;
    QString m_path;
    Obstinacy m_obstinacy;
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
    const auto open = [&] {
        return Descriptor(retried([&] {
            return ::openat(folder, name.constData(),
                            O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        }));
    };
    auto entered = open();
    if (!entered.isOpen() && errno == EACCES && m_obstinacy == Obstinacy::MakeFoldersWritable &&
        ::fchmodat(folder, name.constData(), S_IRWXU, 0) == 0) {
        entered = open();
    }
    struct stat status {};
    if (!entered.isOpen() || ::fstat(entered.number(), &status) != 0) {
        const auto error = errno;
        // An empty folder need not be readable.
        if (!unlink(folder, name, AT_REMOVEDIR)) {
            fail(error, name);
        }
        return false;
    }
    if (m_obstinacy == Obstinacy::MakeFoldersWritable && (status.st_mode & S_IRWXU) != S_IRWXU) {
        ::fchmod(entered.number(), S_IRWXU);
    }
    m_current = std::move(entered);
    m_levels.push_back({name, status.st_dev, status.st_ino, {}});
    return true;
}

void TreeRemoval::removeFiles()
{
    // All names first: what a folder lists while it is being changed is not defined.
    std::vector<QByteArray> files;
    auto &folders = m_levels.back().folders;
    FolderEntries entries(m_current.number());
    while (entries.next()) {
        (entries.type() == DT_DIR ? folders : files).emplace_back(entries.name());
    }
    if (entries.error() != 0) {
        fail(entries.error());
    }
    for (const auto &name : files) {
        if (unlink(m_current.number(), name, 0)) {
            continue;
        }
        if (errno == EISDIR) {
            folders.push_back(name);
        } else {
            fail(errno, name);
        }
    }
}

// Back to the folder above, and removes the one that was left. False where the way is lost.
bool TreeRemoval::leave()
{
    const auto name = m_levels.back().name;
    m_levels.pop_back();
    if (m_levels.empty()) {
        m_current.close();
        if (unlink(m_outside, name, AT_REMOVEDIR)) {
            m_removal.error = {}; // all is gone, whatever it was
        } else {
            fail(errno, name);
        }
        return true;
    }
    Descriptor above(retried(
        [&] { return ::openat(m_current.number(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC); }));
    struct stat status {};
    if (!above.isOpen() || ::fstat(above.number(), &status) != 0) {
        fail(errno, name);
        return false;
    }
    if (status.st_dev != m_levels.back().device || status.st_ino != m_levels.back().inode) {
        fail(ENOENT, name); // somebody has moved the folder away meanwhile
        return false;
    }
    m_current = std::move(above);
    if (!unlink(m_current.number(), name, AT_REMOVEDIR)) {
        fail(errno, name);
    }
    return true;
}

Removal TreeRemoval::run()
{
    if (::unlinkat(m_outside, m_topName.constData(), 0) == 0) {
        m_removal.hasRemovedAnything = true;
        return m_removal;
    }
    if (errno != EISDIR) {
        fail(errno, m_topName);
        return m_removal;
    }
    if (!enter(m_outside, m_topName)) {
        return m_removal;
    }
    removeFiles();
    for (auto onTheWay = true; onTheWay && !m_levels.empty();) {
        auto &folders = m_levels.back().folders;
        if (folders.empty()) {
            onTheWay = leave();
            continue;
        }
        const auto next = folders.back();
        folders.pop_back();
        if (enter(m_current.number(), next)) {
            removeFiles();
        }
    }
    return m_removal;
}

} // namespace

Removal removeInFolder(int folder, const QByteArray &name, const QString &folderPath,
                       Obstinacy obstinacy)
{
    return TreeRemoval(folder, name, folderPath, obstinacy).run();
}

FileError removeItem(const QString &path)
{
    ItemPlace place;
    if (const auto error = openPlace(path, place); error != 0) {
        return {error, path};
    }
    const auto end = path.lastIndexOf(fileNameFromBytes(place.name));
    const auto folder = end == 0 ? QStringLiteral(".") : path.left(end - 1);
    return removeInFolder(place.folder.number(), place.name, folder).error;
}

} // namespace platform
