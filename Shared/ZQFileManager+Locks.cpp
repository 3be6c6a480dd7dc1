// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/FileStatus.h"
#include "Platform/FolderEntries.h"
#include "Platform/PathText.h"
#include "Shared/ZQFileManagerAttributes.h"
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

bool ZQFileManagerAttributes::isFileLocked(const QString &path)
{
    return platform::isImmutable(path);
}

void ZQFileManagerAttributes::lockFile(const QString &path)
{
    setLocked(path, true);
}

void ZQFileManagerAttributes::unlockFile(const QString &path)
{
    setLocked(path, false);
}

void ZQFileManagerAttributes::lockFolder(const QString &folder)
{
    setFolderLocked(folder, true);
}

void ZQFileManagerAttributes::unlockFolder(const QString &folder)
{
    setFolderLocked(folder, false);
}
