// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Folders/StandardFolders.h"

// Where the desktop environment keeps what belongs to a user, by freedesktop.org's specifications.
namespace platform {

// One of the base folders for the user with that home: what the variable says, which counts only
// where it is absolute and the home is this process's own, else the folder inside the home. Null
// without a home.
QString baseFolder(const char *variable, const QString &home, const QString &inHome);

// The folder that is shown to the user with that home as the desktop or as the documents
// (XDG_DESKTOP_DIR and XDG_DOCUMENTS_DIR of xdg-user-dirs; their names follow the user's language).
// Null where none is named, and for any other kind.
QString folderNamedByDesktop(SearchPathDirectory directory, const QString &home);

} // namespace platform
