// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/CopyTree.h"

#include "Platform/CopyAttributes.h"
#include "Platform/CopyContents.h"
#include "Platform/Descriptor.h"
#include "Platform/FileName.h"
#include "Platform/FolderEntries.h"
#include "Platform/ItemPlace.h"
#include "Platform/RemoveItem.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace platform {
namespace {

constexpr auto folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

int openFolder(int folder, const char *name)
{
    return retried([&] { return ::openat(folder, name, folderFlags); });
}

// Goes through the tree with one folder open on either side, so that it can be of any depth.
class TreeCopy {
public:
    explicit TreeCopy(QString source) : m_source(std::move(source)) {}

    FileError run(int fromFolder, const QByteArray &from, int toFolder, const QByteArray &to);

private:
    struct Level {
        QByteArray name;
        QByteArray copyPath; // relative to where the whole copy is
        struct stat source {};
        struct stat copy {};
        std::vector<QByteArray> folders; // still to be copied
    };

    // Each false after a failure.
    bool enter(int fromFolder, const QByteArray &from, int toFolder, const QByteArray &to);
    bool copyFiles();
    bool copyEntry(const QByteArray &name);
    bool copyFile(const QByteArray &name);
    bool leave();
    bool openAbove(Descriptor &folder, struct stat Level::*expected);
    bool fail(int error, const QByteArray &name = {});
    void takeBack() const;

    struct Made {
        QByteArray path;
        bool isFolder = false;
    };

    QString m_source;
    int m_top = -1;
    std::vector<Made> m_made;
    FileError m_error;
    Descriptor m_from;
    Descriptor m_to;
    std::vector<Level> m_levels;
};

bool TreeCopy::fail(int error, const QByteArray &name)
{
    auto path = fileNameBytes(m_source);
    for (std::size_t i = 1; i < m_levels.size(); ++i) {
        path += '/' + m_levels[i].name;
    }
    m_error = {error, fileNameFromBytes(name.isNull() ? path : path + '/' + name)};
    return false;
}

bool TreeCopy::enter(int fromFolder, const QByteArray &from, int toFolder, const QByteArray &to)
{
    Level level;
    level.name = from;
    level.copyPath = m_levels.empty() ? to : m_levels.back().copyPath + '/' + to;
    Descriptor source(openFolder(fromFolder, from.constData()));
    if (!source.isOpen() || ::fstat(source.number(), &level.source) != 0) {
        return fail(errno, m_levels.empty() ? QByteArray() : from);
    }
    // Its own mode at the end: it may be one that lets nobody write.
    if (::mkdirat(toFolder, to.constData(), S_IRWXU) != 0) {
        return fail(errno, m_levels.empty() ? QByteArray() : from);
    }
    m_made.push_back({level.copyPath, true});
    Descriptor copy(openFolder(toFolder, to.constData()));
    if (!copy.isOpen() || ::fstat(copy.number(), &level.copy) != 0) {
        return fail(errno, m_levels.empty() ? QByteArray() : from);
    }
    m_from = std::move(source);
    m_to = std::move(copy);
    m_levels.push_back(std::move(level));
    return copyFiles();
}

bool TreeCopy::copyFiles()
{
    std::vector<QByteArray> names;
    if (const auto error = readNames(m_from.number(), names); error != 0) {
        return fail(error);
    }
    return std::all_of(names.begin(), names.end(),
                       [this](const QByteArray &name) { return copyEntry(name); });
}

bool TreeCopy::copyEntry(const QByteArray &name)
{
    struct stat status {};
    if (::fstatat(m_from.number(), name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return fail(errno, name);
    }
    if (S_ISDIR(status.st_mode)) {
        m_levels.back().folders.push_back(name);
        return true;
    }
    if (S_ISREG(status.st_mode)) {
        return copyFile(name);
    }
    if (const auto error = copySpecial(m_from.number(), name, status, m_to.number(), name);
        error != 0) {
        return fail(error, name);
    }
    m_made.push_back({m_levels.back().copyPath + '/' + name, false});
    return true;
}

// Under its final name at once: the folder around it does not have its own yet.
bool TreeCopy::copyFile(const QByteArray &name)
{
    const Descriptor source(retried([&] {
        return ::openat(m_from.number(), name.constData(),
                        O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }));
    struct stat status {};
    if (!source.isOpen() || ::fstat(source.number(), &status) != 0) {
        return fail(errno, name);
    }
    const Descriptor copy(retried([&] {
        return ::openat(m_to.number(), name.constData(),
                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    }));
    if (!copy.isOpen()) {
        return fail(errno, name);
    }
    m_made.push_back({m_levels.back().copyPath + '/' + name, false});
    auto error = copyContents(source.number(), status, copy.number());
    if (error == 0) {
        error = copyAttributes(source.number(), status, copy.number());
    }
    return error == 0 || fail(error, name);
}

// The folder above, if it still is the one that was come through.
bool TreeCopy::openAbove(Descriptor &folder, struct stat Level::*expected)
{
    Descriptor above(openFolder(folder.number(), ".."));
    struct stat status {};
    if (!above.isOpen() || ::fstat(above.number(), &status) != 0) {
        return fail(errno);
    }
    const auto &entered = m_levels[m_levels.size() - 2].*expected;
    if (status.st_dev != entered.st_dev || status.st_ino != entered.st_ino) {
        return fail(ENOENT);
    }
    folder = std::move(above);
    return true;
}

bool TreeCopy::leave()
{
    // The way up first: the folder's own mode may close it.
    const auto isTop = m_levels.size() == 1;
    const Descriptor from(::fcntl(m_from.number(), F_DUPFD_CLOEXEC, 0));
    const Descriptor to(::fcntl(m_to.number(), F_DUPFD_CLOEXEC, 0));
    if (!from.isOpen() || !to.isOpen()) {
        return fail(errno);
    }
    if (!isTop && (!openAbove(m_from, &Level::source) || !openAbove(m_to, &Level::copy))) {
        return false;
    }
    if (const auto error = copyAttributes(from.number(), m_levels.back().source, to.number());
        error != 0) {
        return fail(error);
    }
    m_levels.pop_back();
    return true;
}

// By what is known to be there, so that nothing needs to be opened: that may be what failed.
void TreeCopy::takeBack() const
{
    for (const auto &made : m_made) {
        if (made.isFolder) {
            ::fchmodat(m_top, made.path.constData(), S_IRWXU, 0);
        }
    }
    std::for_each(m_made.rbegin(), m_made.rend(), [this](const Made &made) {
        ::unlinkat(m_top, made.path.constData(), made.isFolder ? AT_REMOVEDIR : 0);
    });
    struct stat status {};
    if (!m_made.empty() &&
        ::fstatat(m_top, m_made.front().path.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        // Some of the paths are longer than the system takes.
        removeInFolder(m_top, m_made.front().path, QString(), Obstinacy::MakeFoldersWritable);
    }
}

FileError TreeCopy::run(int fromFolder, const QByteArray &from, int toFolder, const QByteArray &to)
{
    m_top = toFolder;
    const auto unfinished = temporaryName();
    auto fine = enter(fromFolder, from, toFolder, unfinished);
    while (fine && !m_levels.empty()) {
        auto &folders = m_levels.back().folders;
        if (folders.empty()) {
            fine = leave();
            continue;
        }
        const auto name = folders.back();
        folders.pop_back();
        fine = enter(m_from.number(), name, m_to.number(), name);
    }
    if (fine) {
        const auto error = renameInPlace(toFolder, unfinished, toFolder, to);
        fine = error == 0 || fail(error);
    }
    if (!fine) {
        takeBack();
    }
    return m_error;
}

} // namespace

FileError copyTree(int fromFolder, const QByteArray &from, int toFolder, const QByteArray &to,
                   const QString &source)
{
    return TreeCopy(source).run(fromFolder, from, toFolder, to);
}

} // namespace platform
