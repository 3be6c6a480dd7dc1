// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Support/ZQLogGathering.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Trees/CopyItem.h"
#include "Platform/Core/Trees/CreateFolder.h"
#include "Platform/Core/Trees/RemoveItem.h"
#include "Shared/Files/ZQFileManager.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <utility>

using platform::appendingPathComponent;

namespace {

const QString folderName = QStringLiteral("ZQ_App_Logs");

constexpr auto maxTries = 100;

// Held while the descriptor is open; nobody else uses this lock.
platform::Descriptor lockOf(const QString &folder)
{
    platform::Descriptor lock(platform::retried([&] {
        return ::open(platform::fileNameBytes(folder).constData(),
                      O_RDONLY | O_DIRECTORY | O_CLOEXEC); // NOLINT(*-vararg)
    }));
    // Where the file system has no locks, the gathering goes on without.
    platform::retried([&] { return ::flock(lock.fd(), LOCK_EX); });
    return lock;
}

// The file that a symbolic link leads to in the end; the path itself of anything else, and of a
// link that leads nowhere.
QString withLinksFollowed(const QString &path)
{
    if (platform::symbolicLinkDestination(path).isNull()) {
        return path;
    }
    std::array<char, PATH_MAX> destination{};
    return ::realpath(platform::fileNameBytes(path).constData(), destination.data()) == nullptr
               ? path
               : platform::fileNameFromBytes(destination.data());
}

bool isLog(const QString &fileName, const QString &appName)
{
    return fileName.startsWith(appName) && fileName.endsWith(QStringLiteral(".log"));
}

bool isCrashReport(const QString &fileName, const QString &appName)
{
    return fileName.startsWith(appName + QLatin1Char('_')) &&
           fileName.endsWith(QStringLiteral(".crash"));
}

QString preferencesName(const QString &appName)
{
    return QStringLiteral("com.corvane.") + appName + QStringLiteral(".plist");
}

} // namespace

ZQLogGathering::ZQLogGathering(QStringList names, QStringList additionalFiles)
    : m_names(std::move(names)), m_additionalFiles(std::move(additionalFiles)),
      m_folder(appendingPathComponent(ZQLocalPaths::tempDirectory(), folderName))
{
}

ZQLogGathering::Outcome ZQLogGathering::run()
{
    const auto lock = lockOf(ZQLocalPaths::tempDirectory());
    if (!prepareFolder() || !gatherDomain(Domain::User) || !gatherDomain(Domain::Local) ||
        !gatherAdditionalFiles()) {
        return Outcome::Failed;
    }
    return m_count == 0 ? Outcome::NothingFound : compress();
}

bool ZQLogGathering::prepareFolder()
{
    if (platform::itemExists(m_folder)) {
        if (const auto error = platform::removeItem(m_folder)) {
            return fail(QStringLiteral("Error removing existing folder: %@"), error);
        }
    }
    // Private, and so the archive made from it is private.
    auto error = platform::createFolder(ZQLocalPaths::tempDirectory());
    if (!error && ::mkdir(platform::fileNameBytes(m_folder).constData(), S_IRWXU) != 0) {
        error = {errno, m_folder};
    }
    return !error || fail(QStringLiteral("Error creating temp folder: %@"), error);
}

bool ZQLogGathering::gatherDomain(Domain domain)
{
    const auto library = ZQLocalPaths::libraryDirectory(domain);
    if (library.isNull()) { // a user without a home
        return true;
    }
    const auto logs = ZQLocalPaths::logDirectory(domain);
    return gatherFrom(library + QStringLiteral("/Logs/Corvane"), isLog) &&
           gatherFrom(appendingPathComponent(logs, QStringLiteral("CrashReporter")),
                      isCrashReport) &&
           gatherFrom(appendingPathComponent(logs, QStringLiteral("DiagnosticReports")),
                      isCrashReport) &&
           gatherPreferences(ZQLocalPaths::prefsDirectory(domain));
}

QStringList ZQLogGathering::namesIn(const QString &folder)
{
    const auto bytes = platform::fileNameBytes(folder);
    // The process stays there: kept on purpose for the maker's programs that use the library.
    [[maybe_unused]] const auto changed = ::chdir(bytes.constData());
    const platform::Descriptor open(platform::retried([&] {
        return ::open(bytes.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); // NOLINT(*-vararg)
    }));
    std::vector<QByteArray> names;
    const auto error = open.isOpen() ? platform::readNames(open.fd(), names) : errno;
    if (error != 0 && error != ENOENT && error != ENOTDIR) {
        m_unreadableFolders << platform::FileError(error, folder).localizedDescription();
    }
    QStringList list;
    for (const auto &name : names) {
        list << platform::fileNameFromBytes(name);
    }
    return list;
}

bool ZQLogGathering::gatherFrom(const QString &folder, const Choice &choice)
{
    for (const auto &name : namesIn(folder)) {
        for (const auto &appName : m_names) {
            if (choice(name, appName) && !gatherFile(folder, name)) {
                return false;
            }
        }
    }
    return true;
}

bool ZQLogGathering::gatherPreferences(const QString &folder)
{
    for (auto appName : m_names) {
        appName.remove(QLatin1Char(' '));
        auto name = preferencesName(appName);
        if (!platform::fileExists(appendingPathComponent(folder, name))) {
            name = preferencesName(appName.toLower());
        }
        if (platform::fileExists(appendingPathComponent(folder, name)) &&
            !gatherFile(folder, name)) {
            return false;
        }
    }
    return true;
}

bool ZQLogGathering::gatherFile(const QString &folder, const QString &name)
{
    static const auto complaint = QStringLiteral("Unable to copy log: %@");
    const auto path = appendingPathComponent(folder, name);
    const auto target = appendingPathComponent(m_folder, folder);
    const auto copy = appendingPathComponent(target, name);
    if (platform::itemExists(copy)) {
        return true;
    }
    if (const auto error = platform::createFolder(target)) {
        return fail(complaint, error);
    }
    auto error = platform::copyItem(withLinksFollowed(path), copy);
    // A program that begins a new log renames the old ones: a name is gone for a moment or for
    // good.
    for (int i = 1; error.code() == ENOENT && i < maxTries; ++i) {
        if (!platform::itemExists(path)) {
            return true;
        }
        error = platform::copyItem(withLinksFollowed(path), copy);
    }
    if (error) {
        return fail(complaint, error);
    }
    ++m_count;
    return true;
}

bool ZQLogGathering::gatherAdditionalFiles()
{
    for (const auto &path : m_additionalFiles) {
        const auto target =
            appendingPathComponent(m_folder, platform::deletingLastPathComponent(path));
        if (!platform::isFolder(target)) {
            ZQFileManager::createDirectory(target);
        }
        const auto copy = appendingPathComponent(target, platform::lastPathComponent(path));
        if (const auto error = platform::copyItem(path, copy)) {
            return fail(QStringLiteral("Unable to copy file: %@"), error);
        }
        ++m_count;
    }
    return true;
}

bool ZQLogGathering::fail(const QString &format, const platform::FileError &error)
{
    m_failure = error.localizedDescription();
    platform::consoleLog(format, m_failure);
    return false;
}
