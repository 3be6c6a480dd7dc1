// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/ItemPlace.h"

#include <sys/stat.h>

namespace platform {

class CopyProgress;

// Copies an item, a folder with all that is in it, under a new name, with modes, times, extended
// attributes, access control lists (also none, whatever the folder there hands down) and hard links
// among its files; for root, also owners. Symbolic links are copied as links. EEXIST where
// something has the new name. The copy has that name only when it is whole; nothing is left of one
// that fails.
//
// A folder is copied on several threads; the memory for it does not depend on the size. A progress
// is told how far the copy is and can cancel it.
FileError copyItem(const QString &source, const QString &destination,
                   CopyProgress *progress = nullptr);

// A copy is for a move when the original is to be removed afterwards: it fails before anything is
// done where that cannot be.
enum class CopyPurpose { Copy, Move };

// The original and its copy, to recognise them later.
struct CopiedItem {
    struct stat original {};
    struct stat copy {};
};

// The same from an open place to another. The paths are for the error's words.
FileError copyPlace(const ItemPlace &from, const QString &source, const ItemPlace &to,
                    const QString &destination, CopyProgress *progress, CopyPurpose purpose,
                    CopiedItem &copied);

} // namespace platform
