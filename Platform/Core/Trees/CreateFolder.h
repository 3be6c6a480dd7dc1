// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/FileError.h"

#include <sys/types.h>

namespace platform {

// Makes a folder and those above it that are missing, for everybody as far as the process's mask
// goes; what root makes in a user's folder belongs to that user. No error if it exists. Removes
// what it has made if it fails.
FileError createFolder(const QString &path);

// The same with a mode of one's own, and opens the folder with O_PATH; links as by openPath().
FileError openFolderOrMake(const QString &path, mode_t mode, Descriptor &folder);

} // namespace platform
