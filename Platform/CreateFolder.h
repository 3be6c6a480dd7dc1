// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Descriptor.h"
#include "Platform/FileError.h"

#include <sys/types.h>

namespace platform {

// Makes a folder and those above it that are missing, for everybody as far as the process's mask
// goes. No error where it exists. Takes back what it has made where it fails.
FileError createFolder(const QString &path);

// The same with a mode of one's own, and opens the folder with O_PATH; links as by openPath(). What
// root makes in the folder of somebody else is given to that somebody where it is to be theirs.
enum class NewOwner { Maker, OwnerAbove };
FileError openFolderOrMake(const QString &path, mode_t mode, NewOwner owner, Descriptor &folder);

} // namespace platform
