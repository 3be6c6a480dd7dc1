// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/FileError.h"

#include <QByteArray>

namespace platform {

// Removes an item, a folder with all that is in it. Symbolic links are removed, never followed.
// Goes on after a failure and gives the first one; a folder that itself may not be removed keeps
// its contents.
FileError removeItem(const QString &path);

enum class Obstinacy {
    No,
    MakeFoldersWritable, // for what this process has made and nobody else knows of
};

struct Removal {
    FileError error;
    bool hasRemovedAnything = false;
};

// The same in an open folder; paths in errors begin with the name of that folder.
Removal removeInFolder(int folder, const QByteArray &name, const QString &folderPath,
                       Obstinacy obstinacy = Obstinacy::No);

} // namespace platform
