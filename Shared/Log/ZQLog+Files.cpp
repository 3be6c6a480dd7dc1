// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/SystemInfo.h"
#include "Platform/Core/Bundles/Bundle.h"
#include "Platform/Core/Folders/PrivateFiles.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/Console.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Shared/Log/ZQLog.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <cstdio>

// The generations of the log file.
namespace {

constexpr long generations = 5;

// Null where the domain has no library.
QString logFolder(Domain domain)
{
    const auto library = ZQLocalPaths::libraryDirectory(domain);
    return library.isNull() ? QString() : library + QStringLiteral("/Logs/Corvane");
}

// The switch that all of the maker's programs share.
bool isDisabledByPreferences()
{
    const auto folder = ZQLocalPaths::prefsDirectory(Domain::User);
    const auto preferences =
        platform::dictionaryFromFile(folder + QStringLiteral("/com.corvane.global.plist"));
    if (folder.isNull() || !preferences) {
        return false;
    }
    const auto value = preferences->value(QStringLiteral("disable-logging"));
    switch (value.userType()) {
    case QMetaType::QString:
        return value.toString() == QStringLiteral("1");
    case QMetaType::Bool:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return value.toDouble() == 1;
    default:
        return false;
    }
}

void writeHeader()
{
    ZQLog::fastAppendLog(QStringLiteral("Log started: %@\n"),
                         platform::description(QDateTime::currentDateTimeUtc()));
    static const char here = 0;
    const auto bundle = platform::Bundle::containing(&here);
    const auto version = bundle.infoDictionary().value(QStringLiteral("CFBundleVersion"));
    if (version.isValid()) {
        ZQLog::fastAppendLog(QStringLiteral("Version: %@\n"), version);
    }
    if (!bundle.isNull()) {
        ZQLog::fastAppendLog(QStringLiteral("Path: %@\n"), bundle.executablePath());
    }
    constexpr double bytesPerGigabyte = 1024.0 * 1024 * 1024;
    ZQLog::appendLog(QStringLiteral("System: OS X %@, %li CPU(s), %0.2f GB RAM\n"),
                     platform::operatingSystemVersionString(), platform::processorCount(),
                     static_cast<double>(platform::physicalMemory()) / bytesPerGigabyte);
    ZQLog::fastAppendLog(sizeof(void *) == 8 ? QStringLiteral("Running in 64-bit mode\n")
                                             : QStringLiteral("Running in 32-bit mode\n"));
}

} // namespace

void ZQLog::createNewLog(const QString &applicationName)
{
    auto &log = sharedController();
    log.guarded([&] {
        if (log.startNewLog(applicationName)) {
            writeHeader();
        }
    });
}

// False where there is no new file, for reasons that have been printed.
bool ZQLog::startNewLog(const QString &applicationName)
{
    // Calls do not exclude each other, as the maker's other programs expect; the writer waits.
    const std::shared_lock newLog(m_newLogs);
    setFileHandle(nullptr);
    if (isDisabledByPreferences()) {
        platform::printLine(QStringLiteral("Logging is disabled"));
        m_loggingDisabled.store(true, std::memory_order_relaxed);
        return false;
    }
    if (!applicationName.isNull() && appName().isNull()) {
        setAppName(applicationName);
    }
    m_bytesWritten.store(0, std::memory_order_relaxed);

    const auto folder = logFolder(Domain::User);
    if (!QFileInfo::exists(folder) && !platform::createPrivateFolder(folder)) {
        platform::printLine(
            platform::format(QStringLiteral("Unable to create folder %s."), folder));
        return false;
    }
    const auto file = currentFile();
    if (platform::nameExists(file) && !rotate(folder)) {
        return false;
    }
    QString error;
    if (!platform::createEmptyPrivateFile(file, &error)) {
        platform::printLine(
            platform::format(QStringLiteral("Unable to create log file %s - %s"), file, error));
        return false;
    }
    auto handle = platform::AppendFile::open(file);
    if (handle == nullptr) {
        return false;
    }
    setFileHandle(std::move(handle));
    return true;
}

// Every generation becomes the next, the last one goes. False as soon as one cannot be moved.
bool ZQLog::rotate(const QString &folder) const
{
    std::remove(QFile::encodeName(generation(folder, generations)).constData());
    for (long number = generations - 1; number >= 1; --number) {
        const auto from = generation(folder, number);
        const auto to = generation(folder, number + 1);
        if (platform::nameExists(from) && !platform::renameWithoutReplacing(from, to)) {
            platform::printLine(
                platform::format(QStringLiteral("Unable to move file %s to %s."), from, to));
            return false;
        }
    }
    return true;
}

// Null without a folder.
QString ZQLog::generation(const QString &folder, long number) const
{
    return folder.isNull()
               ? QString()
               : platform::format(QStringLiteral("%@/%@.%li.log"), folder, appName(), number);
}

// For root the machine's, while the user's folder is created and rotated: kept on purpose for
// support, which looks there.
QString ZQLog::currentFile() const
{
    const auto domain = platform::isRunningAsRoot() ? Domain::Local : Domain::User;
    return generation(logFolder(domain), 1);
}

QStringList ZQLog::availableLogs()
{
    QStringList logs;
    for (long number = 1; number <= generations; ++number) {
        const auto path = sharedController().generation(logFolder(Domain::User), number);
        if (QFileInfo::exists(path)) {
            logs << path;
        }
    }
    return logs;
}
