// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/FileStatus.h"
#include "Platform/FolderEntries.h"
#include "Platform/PathText.h"
#include "Shared/ZQFileManager.h"
#include "Shared/ZQLog.h"

namespace {

void setLocked(const QString &path, bool locked)
{
    if (const auto error = platform::setImmutable(path, locked)) {
        // The same words for locking: kept on purpose.
        ZQLog::fastAppendLog(QStringLiteral("Unable to unlock file %@: %@"), path, error.reason());
    }
}

void setFolderLocked(const QString &folder, bool locked)
{
    for (const auto &name : platform::namesInFolder(folder)) {
        const auto path = platform::appendingPathComponent(folder, name);
        if (platform::isFolderItself(path)) {
            setFolderLocked(path, locked);
        } else {
            setLocked(path, locked);
        }
    }
}

} // namespace

QString ZQFileManager::uniqueFilename(const QString &path)
{
    if (!platform::itemExists(path)) {
        return path;
    }
    const auto extension = platform::pathExtension(path);
    const auto ending = extension.isEmpty() ? QString() : u'.' + extension;
    const auto stem = platform::deletingPathExtension(path);
    for (long number = 2;; ++number) {
        auto candidate = stem + u' ' + QString::number(number) + ending;
        if (!platform::itemExists(candidate)) {
            return candidate;
        }
    }
}

bool ZQFileManager::isFileLocked(const QString &path)
{
    return platform::isImmutable(path);
}

void ZQFileManager::lockFile(const QString &path)
{
    setLocked(path, true);
}

void ZQFileManager::unlockFile(const QString &path)
{
    setLocked(path, false);
}

void ZQFileManager::lockFolder(const QString &folder)
{
    setFolderLocked(folder, true);
}

void ZQFileManager::unlockFolder(const QString &folder)
{
    setFolderLocked(folder, false);
}
