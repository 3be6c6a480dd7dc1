// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileStatus.h"
#include "Shared/Files/ZQFileManagerAttributes.h"
#include "Shared/Log/ZQLog.h"

namespace {

void reportFailure(const platform::FileError &error)
{
    // The same words for locking: who reads logs searches for them.
    ZQLog::fastAppendLog(QStringLiteral("Unable to unlock file %@: %@"), error.path(),
                         error.reason());
}

void setLocked(const QString &path, bool locked)
{
    if (const auto error = platform::setImmutable(path, locked)) {
        reportFailure(error);
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
    platform::setImmutableBelow(folder, true, reportFailure);
}

void ZQFileManagerAttributes::unlockFolder(const QString &folder)
{
    platform::setImmutableBelow(folder, false, reportFailure);
}
