// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/FileError.h"

#include <QByteArray>

namespace platform {

// Removes an item, a folder with all that is in it. Symbolic links are removed, never followed.
// Folders of this user in it that forbid what has to be done get the rights for it. Goes on after a
// failure and gives the first one; a folder that itself may not be removed keeps its contents, and
// those that stay have the mode that they had.
FileError removeItem(const QString &path);

enum class Obstinacy { MakeFoldersWritable };

struct Removal {
    FileError error;
    bool hasRemovedAnything = false;
};

// The same in an open folder; paths in errors begin with the name of that folder.
Removal removeInFolder(int folder, const QByteArray &name, const QString &folderPath,
                       Obstinacy obstinacy = Obstinacy::MakeFoldersWritable);

// The same with a folder that is open for reading, and with no other that has the name by now.
Removal removeOpenFolder(int folder, const QByteArray &name, int open, const QString &folderPath);

} // namespace platform
