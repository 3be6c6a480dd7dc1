// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/FileError.h"

#include <functional>

// What something at a path is. Paths of any bytes; an empty path and one with a NUL lead nowhere.
namespace platform {

// Links are followed.
bool fileExists(const QString &path);
bool isFolder(const QString &path);

// Of the item itself, be it a link.
bool itemExists(const QString &path);
// Whether it is known that there is none: what may not be looked at does not count as missing.
bool isMissing(const QString &path);
bool isFolderItself(const QString &path);

// Where a symbolic link leads, as it is written; a null text where this is none.
QString symbolicLinkDestination(const QString &path);

// Whether the item, itself, has the immutable flag, with which nobody can change, rename or remove
// it. False where that cannot be read.
bool isImmutable(const QString &path);

// Sets or clears that flag, which only root can do. Succeeds if the flag already has that value; on
// a file system without flags, clearing succeeds.
FileError setImmutable(const QString &path, bool immutable);

// The same with all that is below a folder and is no folder. Links in it are not followed.
using Report = std::function<void(const FileError &)>;
void setImmutableBelow(const QString &folder, bool immutable, const Report &report);

} // namespace platform
