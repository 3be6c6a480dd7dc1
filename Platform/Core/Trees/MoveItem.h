// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/ItemPlace.h"

namespace platform {

// Gives an item a new name, also on another file system, where it is copied and then removed.
// EEXIST where something has the new name. Where it fails, the original is as it was and nothing
// has the new name: what cannot be removed is not copied, and a folder loses its name in one step
// before anything in it goes. If part of such a folder still cannot be removed, it is hidden under
// a name that begins with ".unfinished-" and removed later; the move has succeeded then.
FileError moveItem(const QString &source, const QString &destination);

// The same from an open place to another. The paths are for the error's words.
FileError movePlace(const ItemPlace &from, const QString &source, const ItemPlace &to,
                    const QString &destination);

} // namespace platform
