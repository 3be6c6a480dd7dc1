// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Folders/Trash.h"

#include "Platform/Core/Files/ItemPlace.h"
#include "Platform/Core/Files/UnnamedFile.h"
#include "Platform/Core/Folders/DesktopFolders.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Trees/CreateFolder.h"
#include "Platform/Core/Trees/MoveItem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <ctime>
#include <utility>

namespace platform {
namespace {

constexpr auto maxNameLength = 255; // bytes, on Linux

const QString recordEnding = QStringLiteral(".trashinfo");

bool isFolder(const QString &path, const struct stat &folder)
{
    struct stat status {};
    return ::stat(fileNameBytes(path).constData(), &status) == 0 &&
           status.st_dev == folder.st_dev && status.st_ino == folder.st_ino;
}

// Where the desktop keeps the trash of the user with that home.
QString desktopTrashOf(const QString &home)
{
    return appendingPathComponent(baseFolder("XDG_DATA_HOME", home, QStringLiteral(".local/share")),
                                  QStringLiteral("Trash"));
}

// Null where the folder is not the desktop's.
QString desktopTrash(int folder, const QString &trashFolder)
{
    struct stat status {};
    if (::fstat(folder, &status) != 0) {
        return {};
    }
    // Of this process, and of the home that the folder is in, which is another one where root acts
    // for the user.
    const auto home = deletingLastPathComponent(trashFolder);
    for (const auto &trash : {desktopTrashOf(homeDirectory()), desktopTrashOf(home)}) {
        if (isFolder(trash, status) ||
            isFolder(appendingPathComponent(trash, QStringLiteral("files")), status)) {
            return trash;
        }
    }
    return {};
}

FileError openOwnersFolder(const QString &path, Descriptor &folder)
{
    return openFolderOrMake(path, S_IRWXU, folder);
}

QByteArray linkAt(const ItemPlace &place)
{
    QByteArray target(PATH_MAX, '\0');
    const auto size = ::readlinkat(place.folder.fd(), place.name.constData(), target.data(),
                                   static_cast<std::size_t>(target.size()));
    return target.left(static_cast<int>(std::max<ssize_t>(size, 0)));
}

// Makes a home's trash, where it is missing, a link to the files of the desktop's, so that what
// goes there can be seen and restored there. What such a link leads to is made anew where that is
// gone.
void linkToDesktopTrash(const QString &trashFolder)
{
    const auto home = deletingLastPathComponent(trashFolder);
    const auto trash = desktopTrashOf(home);
    const auto files = fileNameBytes(appendingPathComponent(trash, QStringLiteral("files")));
    const auto start = fileNameBytes(home) + '/';
    // So that it still leads there when the home has moved.
    const auto target = files.startsWith(start) ? files.mid(start.size()) : files;
    ItemPlace place;
    struct stat status {};
    if (lastPathComponent(trashFolder) != QStringLiteral(".Trash") ||
        openPlace(trashFolder, place) != 0) {
        return;
    }
    const bool isMissing =
        ::fstatat(place.folder.fd(), place.name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0 &&
        errno == ENOENT;
    Descriptor folder;
    const bool isThere =
        (isMissing || linkAt(place) == target) &&
        !openOwnersFolder(appendingPathComponent(trash, QStringLiteral("info")), folder) &&
        !openOwnersFolder(fileNameFromBytes(files), folder);
    if (isThere && isMissing &&
        ::symlinkat(target.constData(), place.folder.fd(), place.name.constData()) != 0) {
        // It becomes a folder then.
    }
}

FileError openTrash(const QString &path, Descriptor &folder)
{
    linkToDesktopTrash(path);
    return openOwnersFolder(path, folder);
}

// "name 2.ext" and so on, cut so that there is room for more bytes behind it.
QString numberedName(const QString &name, int number, int room)
{
    const auto maxLength = maxNameLength - room;
    auto extension = pathExtension(name);
    extension = extension.isEmpty() ? QString() : u'.' + extension;
    if (fileNameBytes(extension).size() > maxLength / 2) {
        extension = QString(); // no extension, but a dot somewhere in a long name
    }
    auto stem = name.chopped(extension.size());
    const auto end = (number == 1 ? QString() : u' ' + QString::number(number)) + extension;
    while (fileNameBytes(stem + end).size() > maxLength) {
        stem.chop(stem.size() > 1 && stem.at(stem.size() - 1).isLowSurrogate() &&
                          stem.at(stem.size() - 2).isHighSurrogate()
                      ? 2
                      : 1);
    }
    return stem + end;
}

// An item, its path, and the name that it has there.
struct Trashed {
    ItemPlace place;
    QString path;
    QString name;
};

FileError moveToPlainTrash(const Trashed &item, ItemPlace trash, const QString &trashFolder)
{
    for (int number = 1;; ++number) {
        const auto name = numberedName(item.name, number, 0);
        trash.name = fileNameBytes(name);
        auto error =
            movePlace(item.place, item.path, trash, appendingPathComponent(trashFolder, name));
        if (error.code() != EEXIST) {
            return error;
        }
    }
}

QByteArray trashRecord(const QString &path)
{
    const auto now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + percentEncodedPath(absolutePath(path)) +
           "\nDeletionDate=" + QByteArray(date.data()) + '\n';
}

// What root does in a user's trash is for that user to restore.
void giveToOwnerOf(int folder, int file)
{
    struct stat status {};
    if (::geteuid() == 0 && ::fstat(folder, &status) == 0 &&
        ::fchown(file, status.st_uid, status.st_gid) != 0) {
        // In a container the owner may be one that cannot be given.
    }
}

enum class Replaces : bool { No, Yes };

// 0, else the reason (errno): EEXIST where that name has a record which it does not replace.
int writeRecord(const ItemPlace &place, const QByteArray &record, Replaces replaces = Replaces::No)
{
    UnnamedFile file;
    auto error = file.create(place.folder.fd(), S_IRUSR | S_IWUSR);
    if (error == 0) {
        error = file.write(record.constData(), static_cast<std::size_t>(record.size()));
    }
    if (error != 0) {
        return error;
    }
    giveToOwnerOf(place.folder.fd(), file.descriptor());
    return replaces == Replaces::Yes ? file.publishOrReplace(place.name) : file.publish(place.name);
}

FileError moveToDesktopTrash(const Trashed &item, const QString &trash)
{
    const auto filesPath = appendingPathComponent(trash, QStringLiteral("files"));
    const auto infoPath = appendingPathComponent(trash, QStringLiteral("info"));
    ItemPlace files;
    ItemPlace info;
    if (auto error = openOwnersFolder(filesPath, files.folder)) {
        return error;
    }
    if (auto error = openOwnersFolder(infoPath, info.folder)) {
        return error;
    }
    const auto record = trashRecord(item.path);
    for (int number = 1;; ++number) {
        const auto name = numberedName(item.name, number, static_cast<int>(recordEnding.size()));
        info.name = fileNameBytes(name + recordEnding);
        files.name = fileNameBytes(name);
        const auto code = writeRecord(info, record);
        if (code == EEXIST) {
            continue;
        }
        if (code != 0) {
            return {code, appendingPathComponent(infoPath, name + recordEnding)};
        }
        auto error =
            movePlace(item.place, item.path, files, appendingPathComponent(filesPath, name));
        if (!error) {
            return error;
        }
        ::unlinkat(info.folder.fd(), info.name.constData(), 0);
        if (error.code() != EEXIST) {
            return error;
        }
    }
}

} // namespace

FileError recycleItem(const QString &path, const QString &trashFolder)
{
    Trashed item{{}, path, lastPathComponent(path)};
    if (const auto error = openPlace(path, item.place); error != 0) {
        return {error, path};
    }
    struct stat status {};
    if (::fstatat(item.place.folder.fd(), item.place.name.constData(), &status,
                  AT_SYMLINK_NOFOLLOW) != 0) {
        return {errno, path};
    }
    ItemPlace trash;
    if (auto error = openTrash(trashFolder, trash.folder)) {
        return error;
    }
    const auto desktop = desktopTrash(trash.folder.fd(), trashFolder);
    return desktop.isNull() ? moveToPlainTrash(item, std::move(trash), trashFolder)
                            : moveToDesktopTrash(item, desktop);
}

bool makeTrash(const QString &trashFolder)
{
    Descriptor folder;
    return !openTrash(trashFolder, folder);
}

TrashRecord::TrashRecord(const QString &path, const QString &trashedPath)
{
    const auto trashFolder = deletingLastPathComponent(trashedPath);
    Descriptor folder;
    struct stat status {};
    if (openFolderOrMake(trashFolder, S_IRWXU, folder) || ::fstat(folder.fd(), &status) != 0) {
        return;
    }
    const auto trash = desktopTrash(folder.fd(), trashFolder);
    if (trash.isNull() ||
        !isFolder(appendingPathComponent(trash, QStringLiteral("files")), status) ||
        openOwnersFolder(appendingPathComponent(trash, QStringLiteral("info")), m_place.folder)) {
        return;
    }
    m_place.name = fileNameBytes(lastPathComponent(trashedPath) + recordEnding);
    // No file has the name, so a record of it is one that was left behind.
    m_isWritten = writeRecord(m_place, trashRecord(path), Replaces::Yes) == 0;
}

void TrashRecord::remove()
{
    if (std::exchange(m_isWritten, false)) {
        ::unlinkat(m_place.folder.fd(), m_place.name.constData(), 0);
    }
}

} // namespace platform
