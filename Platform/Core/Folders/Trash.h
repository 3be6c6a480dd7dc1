// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/ItemPlace.h"

namespace platform {

// Moves an item into a trash folder, which is made where it is missing (see makeTrash()), under its
// own name or, where something has that, one with a number. Where the folder is the desktop's own
// trash, "Trash" in the user's data folder, or the "files" in it, or a link to either, the item
// goes to "files" and a record to "info" first, so that the desktop can restore it
// (freedesktop.org's Trash specification 1.0). To another file system it is copied and then
// removed.
FileError recycleItem(const QString &path, const QString &trashFolder);

// Makes a trash folder where it is missing, for its owner alone. ".Trash" in a home becomes a link
// to the "files" of the desktop's trash, or a folder where that cannot be.
bool makeTrash(const QString &trashFolder);

// The record of an item that others move into a trash folder, under a name that nothing has there.
// Written where the folder is the "files" of the desktop's trash, before the item is moved.
class TrashRecord {
public:
    TrashRecord(const QString &path, const QString &trashedPath);

    // For an item that is not moved after all.
    void remove();

private:
    ItemPlace m_place;
    bool m_isWritten = false;
};

} // namespace platform
