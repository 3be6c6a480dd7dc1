// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/FileError.h"

#include <QByteArray>

namespace platform {

// Removes an item, a folder with all that is in it. Symbolic links are removed, never followed.
// Folders of this user in it that forbid what has to be done get the rights for it. Goes on after a
// failure and gives the first one; a folder that itself may not be removed keeps its contents, and
// those that stay have the mode that they had.
FileError removeItem(const QString &path);

struct Removal {
    FileError error;
    bool hasRemovedAnything = false;
};

// Removes the folder that is open for reading and has this name in another open one, and none that
// has the name by now; paths in errors begin with the path of the other one.
Removal removeOpenFolder(int folder, const QByteArray &name, int open, const QString &folderPath);

} // namespace platform
