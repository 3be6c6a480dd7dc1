// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Trash.h"

#include "Platform/FileName.h"
#include "Platform/FileStatus.h"
#include "Platform/ItemPlace.h"
#include "Platform/MoveItem.h"
#include "Platform/PathText.h"
#include "Platform/PrivateFiles.h"
#include "Platform/StandardFolders.h"
#include "Platform/UnnamedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <ctime>

namespace platform {
namespace {

constexpr auto longestName = 255; // bytes, on Linux

bool isSameFolder(const QString &one, const QString &other)
{
    struct stat first {};
    struct stat second {};
    return ::stat(fileNameBytes(one).constData(), &first) == 0 &&
           ::stat(fileNameBytes(other).constData(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// Where the desktop keeps its trash: of this process and of the home that the folder is in, which
// is another one where root acts for the user.
QStringList desktopTrashes(const QString &trashFolder)
{
    const auto data = fileNameFromBytes(qgetenv("XDG_DATA_HOME"));
    const auto inHome = QStringLiteral(".local/share/Trash");
    return {data.startsWith(u'/') ? appendingPathComponent(data, QStringLiteral("Trash"))
                                  : appendingPathComponent(homeDirectory(), inHome),
            appendingPathComponent(deletingLastPathComponent(trashFolder), inHome)};
}

// Null where the folder is not the desktop's.
QString desktopTrash(const QString &trashFolder)
{
    for (const auto &trash : desktopTrashes(trashFolder)) {
        if (isSameFolder(trashFolder, trash) ||
            isSameFolder(trashFolder, appendingPathComponent(trash, QStringLiteral("files")))) {
            return trash;
        }
    }
    return {};
}

// "name 2.ext" and so on, cut so that there is room for more bytes behind it.
QString numberedName(const QString &name, int number, int room)
{
    const auto most = longestName - room;
    auto extension = pathExtension(name);
    extension = extension.isEmpty() ? QString() : u'.' + extension;
    if (fileNameBytes(extension).size() > most / 2) {
        extension = QString(); // no extension, but a dot somewhere in a long name
    }
    auto stem = name.chopped(extension.size());
    const auto end = (number == 1 ? QString() : u' ' + QString::number(number)) + extension;
    while (fileNameBytes(stem + end).size() > most) {
        stem.chop(stem.size() > 1 && stem.at(stem.size() - 1).isLowSurrogate() &&
                          stem.at(stem.size() - 2).isHighSurrogate()
                      ? 2
                      : 1);
    }
    return stem + end;
}

FileError whyNotAFolder(const QString &path)
{
    return {itemExists(path) ? ENOTDIR : EACCES, path};
}

FileError moveToPlainTrash(const QString &path, const QString &trashFolder)
{
    for (int number = 1;; ++number) {
        const auto name = numberedName(lastPathComponent(path), number, 0);
        auto error = moveItem(path, appendingPathComponent(trashFolder, name));
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

// 0, else the reason (errno): EEXIST where that name has a record.
int writeRecord(const ItemPlace &place, const QByteArray &record)
{
    UnnamedFile file;
    auto error = file.create(place.folder.number(), S_IRUSR | S_IWUSR);
    if (error == 0) {
        error = file.write(record.constData(), static_cast<std::size_t>(record.size()));
    }
    if (error != 0) {
        return error;
    }
    giveToOwnerOf(place.folder.number(), file.descriptor());
    return file.publish(place.name);
}

FileError moveToDesktopTrash(const QString &path, const QString &trash)
{
    const auto files = appendingPathComponent(trash, QStringLiteral("files"));
    const auto info = appendingPathComponent(trash, QStringLiteral("info"));
    for (const auto &folder : {files, info}) {
        if (!createPrivateFolder(folder)) {
            return whyNotAFolder(folder);
        }
    }
    const auto ending = QStringLiteral(".trashinfo");
    const auto record = trashRecord(path);
    for (int number = 1;; ++number) {
        const auto name =
            numberedName(lastPathComponent(path), number, static_cast<int>(ending.size()));
        const auto recordPath = appendingPathComponent(info, name + ending);
        ItemPlace place;
        auto code = openPlace(recordPath, place);
        if (code == 0) {
            code = writeRecord(place, record);
        }
        if (code == EEXIST) {
            continue;
        }
        if (code != 0) {
            return {code, recordPath};
        }
        auto error = moveItem(path, appendingPathComponent(files, name));
        if (!error) {
            return error;
        }
        ::unlinkat(place.folder.number(), place.name.constData(), 0);
        if (error.code() != EEXIST) {
            return error;
        }
    }
}

} // namespace

FileError recycleItem(const QString &path, const QString &trashFolder)
{
    ItemPlace place;
    if (const auto error = openPlace(path, place); error != 0) {
        return {error, path};
    }
    if (!itemExists(path)) {
        return {ENOENT, path};
    }
    if (!createPrivateFolder(trashFolder)) {
        return whyNotAFolder(trashFolder);
    }
    const auto desktop = desktopTrash(trashFolder);
    return desktop.isNull() ? moveToPlainTrash(path, trashFolder)
                            : moveToDesktopTrash(path, desktop);
}

} // namespace platform
