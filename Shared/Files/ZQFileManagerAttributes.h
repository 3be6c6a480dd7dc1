// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>

#include <chrono>

enum class SetCreationDate { No, Yes };

// Locks, permissions and dates of items. Part of ZQFileManager.
class ZQFileManagerAttributes {
public:
    ZQFileManagerAttributes() = delete;

    // Locked is what has the immutable flag. Failures are logged, "Unable to unlock file ..." for
    // either direction, as who reads logs knows it. Of a folder, all that is in it and below, not
    // itself.
    /// isFileLocked:
    static bool isFileLocked(const QString &path);
    /// lockFile:
    static void lockFile(const QString &path);
    /// unlockFile:
    static void unlockFile(const QString &path);
    /// lockFolder:
    static void lockFolder(const QString &folder);
    /// unlockFolder:
    static void unlockFolder(const QString &folder);

    /// setPosixPermissions:forFile:
    /// A failure is logged.
    static void setPosixPermissions(unsigned mode, const QString &path);

    /// createEmptyFile:
    /// Makes it elsewhere and moves it there, with administrator rights where that is needed.
    static bool createEmptyFile(const QString &path);

    /// touchFile:setCreationDate:
    /// Gives a file the present time; makes none. Where the user may not write to it, with
    /// administrator rights. True also where "touch" fails, unless the path is null: kept on
    /// purpose for the maker's other programs. The creation date is what
    /// platform::setCreationDate() makes of it.
    static bool touchFile(const QString &path, SetCreationDate setCreationDate);
    /// touchFile:
    static bool touchFile(const QString &path);
    /// setModificationDate:forFile:
    static bool setModificationDate(const QDateTime &date, const QString &path);

    /// waitForFileCreation:timeout:
    /// Looks once whether there is a file that is not empty; where there is none, logs that and
    /// sleeps 500 microseconds, unless the time-out is negative. Does not wait longer:
    /// existing callers rely on it.
    static void waitForFileCreation(const QString &path, std::chrono::seconds timeout);
    /// waitForFileWrites:lockFile:
    /// Waits until the last change is more than 4 seconds old. Also for a file that does not exist,
    /// and then for ever, where there is a lock file of that name beside it: existing callers rely
    /// on it. Looks every 500 microseconds and blocks the thread.
    static void waitForFileWrites(const QString &path, const QString &lockFile);
    /// waitForFileWrites:
    static void waitForFileWrites(const QString &path);
};
