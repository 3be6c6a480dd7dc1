// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Folders/StandardFolders.h"

#include <QString>

// Whose folders are meant: the machine's (NO in the keyword forms' "user" flag) or the user's
// (YES).
enum class Domain { Local, User };

enum class ExactMatch { No, Yes };

// Where the standard folders lie, temporary names, who sits at the console, and the guard of system
// directories. Nothing is kept; every call asks the system again. A null text where there is no
// such folder. Any thread.
class ZQLocalPaths {
public:
    ZQLocalPaths() = delete;

    /// pathForDirectory:forUserDomain:
    /// The first folder of that kind in the domains of the mask (platform::SearchPathDomain). For
    /// root, a folder of the user domain is moved to the console user's home.
    static QString pathForDirectory(platform::SearchPathDirectory directory, unsigned domainMask);

    /// applicationDirectory:
    static QString applicationDirectory(Domain domain);
    /// adminApplicationDirectory:
    static QString adminApplicationDirectory(Domain domain);
    /// documentDirectory:
    static QString documentDirectory(Domain domain);
    /// libraryDirectory:
    static QString libraryDirectory(Domain domain);
    /// prefsDirectory:
    static QString prefsDirectory(Domain domain);
    /// cacheDirectory:
    static QString cacheDirectory(Domain domain);
    /// appSupportDirectory:
    static QString appSupportDirectory(Domain domain);
    /// logDirectory:
    static QString logDirectory(Domain domain);
    static QString movieDirectory();
    static QString desktopDirectory();
    static QString systemLibraryDirectory();
    static QString localDocumentationDirectory();

    // The user's folder for caches of the system, with a trailing slash.
    static QString darwinCacheDirectory();

    // Home and name of the user, for root those of the console user.
    static QString userDirectory();
    static QString username();

    // Who is logged in at the console; null where nobody is, the login screen included.
    static QString currentConsoleUser();

    static QString trashDirectory();
    static QString tempDirectory();

    // A new unique text at every call.
    static QString uuid();

    /// randomString:
    /// Small letters and digits. Seeds rand() anew, so that two calls at the same clock readings
    /// give the same text: existing callers rely on it.
    static QString randomString(unsigned length);

    // A path in the temporary folder that nothing has yet. Creates nothing.
    static QString tempFile();

    /// isPathSystemDirectory:exactMatch:
    /// Whether a path must never be deleted, trashed or emptied. Compares the text only; a renamed
    /// desktop or documents folder has two names. An exact match protects the folders themselves,
    /// else all below "/usr", "/var", "/private/var" and "/System" is protected, too.
    static bool isPathSystemDirectory(const QString &path, ExactMatch exactMatch);
    /// isPathSystemDirectory:
    static bool isPathSystemDirectory(const QString &path);

    /// isPathOnTimeMachineVolume:
    static bool isPathOnTimeMachineVolume(const QString &path);

    // What pathForDirectory() does with root's folder: the same folder in the console user's home.
    static QString pathInUserDirectory(const QString &rootPath);
};
