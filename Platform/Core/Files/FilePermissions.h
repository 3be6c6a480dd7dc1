// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/FileError.h"

#include <sys/types.h>

namespace platform {

// Whether this process may write to the item that the path leads to.
bool isWritable(const QString &path);

// Sets the mode bits, links followed as by openPath().
FileError setPermissions(const QString &path, mode_t mode);

} // namespace platform
