// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Files/ItemPlace.h"

#include <sys/stat.h>

namespace platform {

// A file that may be replaced or made: where it is, and what is there now.
struct ReplaceableFile {
    ItemPlace place;
    bool exists = false;
    struct stat status {}; // where it exists
};

// Finds the file that a path leads to. Where a symbolic link has the name it is the file that this
// leads to, unless the link belongs to another user than root. Null, else the reason why it cannot
// be found or must not be replaced.
QString findReplaceable(const QString &path, ReplaceableFile &file);

// A file that root makes in another user's folder is for that user, who could not use it otherwise:
// gives it the folder's owner and group, by its descriptor. Nothing happens for others than root,
// and in root's folders.
void giveToOwnerOfFolder(int folder, int item);

// Gives a new file the mode of the one that it replaces, with the owner's right to read, and, for
// root, its owner. 0, else the reason (errno).
int takeOver(const struct stat &old, int file);

} // namespace platform
