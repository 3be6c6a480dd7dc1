// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// Folders and files that only their owner may read.
namespace platform {

// Creates a folder and those above it that are missing. What root creates in a user's home belongs
// to that user, who could not use it otherwise. False where there is no such folder afterwards.
bool createPrivateFolder(const QString &path);

// Puts an empty file at the path in one step, whatever was there before; a link is replaced, not
// followed. What root makes gets the owner of its folder. False, with the system's words in error,
// when that failed.
bool createEmptyPrivateFile(const QString &path, QString *error);

// Renames inside one file system. False, and nothing happens, where the new path exists already.
bool renameWithoutReplacing(const QString &from, const QString &to);

// Gives either item the path of the other in one step. False, and nothing happens, where there are
// not two, or the file system cannot.
bool exchangeNames(const QString &one, const QString &other);

// Whether anything has this name, be it a link that leads nowhere.
bool nameExists(const QString &path);

} // namespace platform
