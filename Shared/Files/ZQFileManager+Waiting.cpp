// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileDates.h"
#include "Platform/Core/Text/PathText.h"
#include "Shared/Files/ZQFileManager.h"
#include "Shared/Log/ZQLog.h"

#include <thread>

namespace {

constexpr qint64 freshMilliseconds = 4000;

void sleepForAMoment()
{
    std::this_thread::sleep_for(std::chrono::microseconds(500));
}

qint64 age(const QDateTime &date)
{
    return date.msecsTo(QDateTime::currentDateTimeUtc());
}

} // namespace

void ZQFileManagerAttributes::waitForFileCreation(const QString &path, std::chrono::seconds timeout)
{
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    if (ZQFileManager::fileExistsAtPath(path) && ZQFileManager::fileSize(path) != 0) {
        return;
    }
    if (std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start) <= timeout) {
        ZQLog::appendLog(QStringLiteral("File %@ is not yet created. Waiting..."), path);
        sleepForAMoment();
    }
}

void ZQFileManagerAttributes::waitForFileWrites(const QString &path, const QString &lockFile)
{
    auto date = platform::modificationDate(path);
    if (!date.isValid() || age(date) > freshMilliseconds) {
        const auto folder = platform::deletingLastPathComponent(path);
        if (lockFile.isNull() ||
            !ZQFileManager::fileExistsAtPath(platform::appendingPathComponent(folder, lockFile))) {
            return;
        }
    }
    ZQLog::appendLog(QStringLiteral("File %@ is currently being written to. Waiting..."), path);
    while (!date.isValid() || age(date) <= freshMilliseconds) {
        sleepForAMoment();
        date = platform::modificationDate(path);
    }
    ZQLog::appendLog(QStringLiteral("File %@ finished writing."), path);
}

void ZQFileManagerAttributes::waitForFileWrites(const QString &path)
{
    waitForFileWrites(path, QString());
}
