// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/FileError.h"

namespace platform {

// Moves an item into a trash folder, which is made where it is missing, under its own name or,
// where something has that, one with a number. Where the folder is the desktop's own trash, "Trash"
// in the user's data folder, or the "files" in it, or a link to either, the item goes to "files"
// and a record to "info" first, so that the desktop can restore it (freedesktop.org's Trash
// specification 1.0). To another file system it is copied and then removed.
FileError recycleItem(const QString &path, const QString &trashFolder);

} // namespace platform
