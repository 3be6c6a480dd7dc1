// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Folders/Trash.h"
#include "Platform/Core/Text/PathText.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Shared/Files/ZQFileManager.h"
#include "Shared/Files/ZQFileManagerChange.h"

namespace {

// Trashes the files that are wanted by their names, in the folder and all below it.
template <typename IsWanted>
QStringList trashFiles(const QString &folder, const IsWanted &isWanted)
{
    QStringList trashed;
    for (const auto &name : platform::namesInFolder(folder)) {
        const auto path = platform::appendingPathComponent(folder, name);
        if (platform::isFolderItself(path)) {
            trashed << trashFiles(path, isWanted);
        } else if (isWanted(name)) {
            ZQFileManager::trashFile(path);
            trashed << path;
        }
    }
    return trashed;
}

} // namespace

bool ZQFileManager::trashFile(const QString &path, ShouldAuth shouldAuth)
{
    if (platform::isMissing(path)) {
        return true;
    }
    if (!filemanager::refusal(path)) {
        unlockFile(path);
        if (!platform::recycleItem(path, ZQLocalPaths::trashDirectory())) {
            return true;
        }
    }
    const auto authTrash = [](ZQAuthorization &authorization, const QString &absolute) {
        return authorization.authTrashFile(absolute);
    };
    return filemanager::authorised(shouldAuth, authTrash, path);
}

bool ZQFileManager::trashFile(const QString &path)
{
    return trashFile(path, ShouldAuth::Yes);
}

bool ZQFileManager::trashFile(const QString &path, std::chrono::seconds timeout)
{
    return trashFile(path) &&
           filemanager::waitUntil([&] { return platform::isMissing(path); }, timeout);
}

bool ZQFileManager::trashDirectoryContents(const QString &folder, ShouldAuth shouldAuth)
{
    bool allTrashed = true;
    for (const auto &name : platform::namesInFolder(folder)) {
        const auto trashed = trashFile(platform::appendingPathComponent(folder, name), shouldAuth);
        allTrashed = allTrashed && trashed;
    }
    return allTrashed;
}

bool ZQFileManager::trashDirectoryContents(const QString &folder)
{
    return trashDirectoryContents(folder, ShouldAuth::Yes);
}

QStringList ZQFileManager::trashFilesOfType(const QString &extension, const QString &folder)
{
    if (extension.isNull()) {
        return {}; // nil is no extension, not the empty one
    }
    const auto wanted = extension.toLower();
    return trashFiles(folder, [&](const QString &name) {
        return platform::pathExtension(name).toLower() == wanted;
    });
}

QStringList ZQFileManager::trashFilesNamed(const QString &name, const QString &folder)
{
    return trashFiles(folder, [&](const QString &other) { return other == name; });
}
