// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Trees/CopyItem.h"
#include "Platform/Core/Trees/CreateFolder.h"
#include "Platform/Core/Trees/RemoveItem.h"
#include "Shared/Files/ZQFileManager.h"
#include "Shared/Files/ZQFileManagerChange.h"
#include "Shared/Log/ZQLog.h"

using filemanager::authorised;
using filemanager::waitUntil;
using platform::absolutePath;
using platform::appendingPathComponent;

namespace {

platform::FileError removeUnlessProtected(const QString &path)
{
    if (auto error = filemanager::refusal(path)) {
        return error;
    }
    ZQFileManager::unlockFile(path);
    return platform::removeItem(path);
}

} // namespace

bool ZQFileManager::removeFile(const QString &path, ShouldAuth shouldAuth)
{
    if (platform::isMissing(path)) {
        return true;
    }
    const auto error = removeUnlessProtected(path);
    if (!error) {
        return true;
    }
    ZQLog::appendLog(QStringLiteral("Error removing file: %@. Authorizing..."),
                     error.localizedDescription());
    return authorised(shouldAuth, &ZQAuthorization::authRemoveFile, path);
}

bool ZQFileManager::removeFile(const QString &path)
{
    return removeFile(path, ShouldAuth::Yes);
}

bool ZQFileManager::removeFile(const QString &path, std::chrono::seconds timeout)
{
    return removeFile(path) && waitUntil([&] { return platform::isMissing(path); }, timeout);
}

bool ZQFileManager::removeFolderIfEmpty(const QString &folder)
{
    return isFolderEmpty(folder) && removeFile(folder);
}

bool ZQFileManager::createDirectory(const QString &path, ShouldAuth shouldAuth)
{
    if (!isDriveMountedForPath(path)) {
        platform::consoleLog(QStringLiteral("Unable to create directory. Drive is not mounted."));
        return false;
    }
    const auto error = platform::createFolder(path);
    if (!error) {
        return true;
    }
    ZQLog::appendLog(QStringLiteral("Error creating folder: %@. Authorizing..."),
                     error.localizedDescription());
    return authorised(shouldAuth, &ZQAuthorization::authCreateDir, path);
}

bool ZQFileManager::createDirectory(const QString &path)
{
    return createDirectory(path, ShouldAuth::Yes);
}

bool ZQFileManager::createDirectory(const QString &path, std::chrono::seconds timeout)
{
    return createDirectory(path) && waitUntil([&] { return !platform::isMissing(path); }, timeout);
}

QString ZQFileManager::createDirectoryStructure(const QString &path, const QString &destination)
{
    const auto isPlainFolder = isDirectoryAtPath(path) && !isPackageAtPath(path);
    const auto folder = isPlainFolder ? path : platform::deletingLastPathComponent(path);
    auto made = appendingPathComponent(destination, folder);
    if (!fileExistsAtPath(made)) {
        createDirectory(made);
    }
    return made;
}

bool ZQFileManager::copyFile(const QString &source, const QString &destination,
                             ShouldAuth shouldAuth)
{
    if (source.isNull()) {
        ZQLog::appendLogAndPrint(QStringLiteral("Error copying file: source path is nil"));
        return false;
    }
    if (destination.isNull()) {
        ZQLog::appendLogAndPrint(QStringLiteral("Error copying file %@: destination path is nil"),
                                 source);
        return false;
    }
    unlockFile(platform::deletingLastPathComponent(absolutePath(destination)));
    const auto error = platform::copyItem(source, destination);
    if (!error) {
        return true;
    }
    ZQLog::appendLog(QStringLiteral("Error copying file: %@. Authorizing..."),
                     error.localizedDescription());
    return authorised(shouldAuth, &ZQAuthorization::authCopyFile, source, destination);
}

bool ZQFileManager::copyFile(const QString &source, const QString &destination)
{
    return copyFile(source, destination, ShouldAuth::Yes);
}

bool ZQFileManager::copyFile(const QString &source, const QString &destination,
                             std::chrono::seconds timeout)
{
    return copyFile(source, destination) &&
           waitUntil([&] { return !platform::isMissing(destination); }, timeout);
}

bool ZQFileManager::copyContentsOfDirectory(const QString &source, const QString &destination,
                                            std::chrono::seconds timeout)
{
    for (const auto &name : platform::namesInFolder(source)) {
        ZQLog::fastAppendLog(QStringLiteral("File: %@"), name);
        if (!copyFile(appendingPathComponent(source, name),
                      appendingPathComponent(destination, name), timeout)) {
            return false;
        }
    }
    return true;
}
