// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Folders/StandardFolders.h"

#include "Platform/Core/Basics/AccountEntry.h"
#include "Platform/Core/Folders/DesktopFolders.h"
#include "Platform/Core/Folders/PrivateFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <pwd.h>
#include <sys/stat.h>
#include <systemd/sd-login.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

namespace platform {
namespace {

struct Account {
    QString name;
    QString home;
};

template <typename Function, typename Key>
std::optional<Account> accountFrom(Function function, Key key)
{
    const AccountEntry entry(function, key);
    return entry.exists() ? std::optional(Account{QFile::decodeName(entry->pw_name),
                                                  QFile::decodeName(entry->pw_dir)})
                          : std::nullopt;
}

std::optional<Account> accountOfUser(uid_t uid)
{
    return accountFrom(::getpwuid_r, uid);
}

std::optional<Account> accountNamed(const QString &name)
{
    return accountFrom(::getpwnam_r, QFile::encodeName(name).constData());
}

// Path of the folder inside a domain's base; null where the domain has none of that kind.
QString folderIn(SearchPathDirectory directory, SearchPathDomain domain)
{
    const bool isUser = domain == UserDomain;
    const bool isSystem = domain == SystemDomain;
    switch (directory) {
    case SearchPathDirectory::Application:
        return QStringLiteral("/Applications");
    case SearchPathDirectory::AdminApplication:
        return QStringLiteral("/Applications/Utilities");
    case SearchPathDirectory::Library:
        return QStringLiteral("/Library");
    case SearchPathDirectory::Documentation:
        return QStringLiteral("/Library/Documentation");
    case SearchPathDirectory::Caches:
        return QStringLiteral("/Library/Caches");
    case SearchPathDirectory::ApplicationSupport:
        return isSystem ? QString() : QStringLiteral("/Library/Application Support");
    case SearchPathDirectory::Document:
        return isUser ? QStringLiteral("/Documents") : QString();
    case SearchPathDirectory::Desktop:
        return isUser ? QStringLiteral("/Desktop") : QString();
    case SearchPathDirectory::Movies:
        return isUser ? QStringLiteral("/Movies") : QString();
    }
    return {};
}

QString userFolder(SearchPathDirectory directory)
{
    if (isRunningAsRoot()) {
        return QStringLiteral("/var/root") + folderIn(directory, UserDomain);
    }
    const auto home = homeDirectory();
    if (home.isNull()) {
        return {};
    }
    const auto named = folderNamedByDesktop(directory, home);
    return named.isNull() ? QDir::cleanPath(home + folderIn(directory, UserDomain)) : named;
}

// Makes the folder where there is nothing. Whether it is a folder that only this user can enter.
bool isOrBecomesPrivate(const QString &path)
{
    const auto name = QFile::encodeName(path);
    ::mkdir(name.constData(), S_IRWXU);
    struct stat status {};
    return ::lstat(name.constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

} // namespace

QStringList searchPathForDirectories(SearchPathDirectory directory, unsigned domains)
{
    QStringList paths;
    if ((domains & UserDomain) != 0) {
        paths << userFolder(directory);
    }
    if ((domains & LocalDomain) != 0) {
        paths << folderIn(directory, LocalDomain);
    }
    if ((domains & SystemDomain) != 0) {
        const auto folder = folderIn(directory, SystemDomain);
        paths << (folder.isNull() ? folder : QStringLiteral("/System") + folder);
    }
    paths.removeAll(QString());
    return paths;
}

bool isRunningAsRoot()
{
    return ::getuid() == 0;
}

QString homeDirectory()
{
    const auto home = QFile::decodeName(qgetenv("HOME"));
    if (home.startsWith(u'/')) {
        return QDir::cleanPath(home);
    }
    const auto own = accountOfUser(::getuid());
    return own ? own->home : QString();
}

QString homeDirectoryForUser(const QString &name)
{
    if (name.isNull()) {
        return homeDirectory();
    }
    const auto found = accountNamed(name);
    return found ? found->home : QString();
}

QString userName()
{
    const auto own = accountOfUser(::getuid());
    return own ? own->name : QString::number(::getuid());
}

QString consoleUser()
{
    using Text = std::unique_ptr<char, void (*)(void *)>;
    char *name = nullptr;
    uid_t uid = 0;
    if (::sd_seat_get_active("seat0", &name, &uid) < 0) {
        return {};
    }
    const Text session(name, std::free);
    char *kind = nullptr;
    if (session != nullptr && ::sd_session_get_class(session.get(), &kind) >= 0) {
        const Text sessionClass(kind, std::free);
        if (std::strcmp(sessionClass.get(), "greeter") == 0) {
            return QStringLiteral("loginwindow");
        }
    }
    const auto found = accountOfUser(uid);
    return found ? found->name : QString();
}

QString temporaryDirectory()
{
    const auto shared = QDir::tempPath();
    auto own = QStringLiteral("%1/com.corvane.%2").arg(shared).arg(::geteuid());
    if (isOrBecomesPrivate(own)) {
        return own;
    }
    // Somebody else has taken the name, so what stands there cannot be trusted.
    auto atHome = homeDirectory() + QStringLiteral("/.cache/com.corvane.temporary");
    return createPrivateFolder(QFileInfo(atHome).path()) && isOrBecomesPrivate(atHome) ? atHome
                                                                                       : shared;
}

QString globallyUniqueString()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

QString userCacheDirectory()
{
    const auto path = baseFolder("XDG_CACHE_HOME", homeDirectory(), QStringLiteral(".cache"));
    return path.isNull() ? QString() : path + u'/';
}

} // namespace platform
