// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

// Where things lie on this machine. Asked afresh at every call; nothing is cached.
namespace platform {

enum class SearchPathDirectory {
    Application = 1,
    AdminApplication = 4,
    Library = 5,
    Documentation = 8,
    Document = 9,
    Desktop = 12,
    Caches = 13,
    ApplicationSupport = 14,
    Movies = 17,
};

enum SearchPathDomain : unsigned { UserDomain = 1, LocalDomain = 2, SystemDomain = 8 };

// NSSearchPathForDirectoriesInDomains with the tilde expanded: the folders of that kind, user
// domain first. Empty where there is none. For root the user domain lies under "/var/root".
QStringList searchPathForDirectories(SearchPathDirectory directory, unsigned domains);

// True when the real user id is 0.
bool isRunningAsRoot();

// The process's own home: "$HOME" where that is an absolute path, else the account's.
QString homeDirectory();

// The account's home folder; the process's own for no name; null for an unknown account.
QString homeDirectoryForUser(const QString &name);

// Name of the process's account.
QString userName();

// Who sits at the console (seat0): the account's name, "loginwindow" at the login screen, null
// where nobody is.
QString consoleUser();

// The user's own folder for temporary files, made where it does not exist, without a trailing
// slash. Nobody else can enter it, so files of well-known names are safe in it.
QString temporaryDirectory();

// A new unique text at every call, fit for a file name.
QString globallyUniqueString();

// The user's cache folder with a trailing slash, for confstr() with _CS_DARWIN_USER_CACHE_DIR. Null
// where there is none.
QString userCacheDirectory();

} // namespace platform
