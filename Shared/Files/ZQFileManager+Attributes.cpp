// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Files/FileDates.h"
#include "Platform/Core/Files/FilePermissions.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Trees/RemoveItem.h"
#include "Shared/Authorization/ZQAuthorization.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Shared/Files/ZQFileManager.h"
#include "Shared/Log/ZQLog.h"
#include "Shared/Tasks/ZQTaskEx.h"

namespace {

const QString touch = QStringLiteral("/usr/bin/touch");
constexpr std::chrono::seconds timeForTouch{5};

void setCreationDateToNow(SetCreationDate setCreationDate, const QString &path)
{
    if (setCreationDate == SetCreationDate::Yes) {
        platform::setCreationDate(QDateTime::currentDateTimeUtc(), path);
    }
}

} // namespace

void ZQFileManagerAttributes::setPosixPermissions(unsigned mode, const QString &path)
{
    if (const auto error = platform::setPermissions(path, mode)) {
        ZQLog::appendLog(QStringLiteral("Error setting permissions for file %@: %@"), path,
                         error.reason());
    }
}

bool ZQFileManagerAttributes::createEmptyFile(const QString &path)
{
    if (path.isEmpty()) {
        return false;
    }
    const auto made = ZQLocalPaths::tempFile();
    if (!platform::replaceFile(made, QByteArray())) {
        return false;
    }
    const auto moved = ZQFileManager::moveFile(made, path);
    if (!moved) {
        platform::removeItem(made);
    }
    return moved;
}

bool ZQFileManagerAttributes::touchFile(const QString &path, SetCreationDate setCreationDate)
{
    if (path.isNull() || path.contains(QChar(0))) {
        return false;
    }
    // Never taken for an option.
    const QStringList arguments{QStringLiteral("-c"), platform::absolutePath(path)};
    if (platform::isWritable(path)) {
        ZQTaskEx::runTask(touch, arguments, timeForTouch);
        setCreationDateToNow(setCreationDate, path);
        return true;
    }
    setCreationDateToNow(setCreationDate, path);
    return ZQAuthorization::sharedController().authExecTask(touch, arguments, Async::No) == 0;
}

bool ZQFileManagerAttributes::touchFile(const QString &path)
{
    return touchFile(path, SetCreationDate::No);
}

bool ZQFileManagerAttributes::setModificationDate(const QDateTime &date, const QString &path)
{
    return platform::setModificationDate(date, path);
}
