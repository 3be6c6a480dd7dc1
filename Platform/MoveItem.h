// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/FileError.h"

namespace platform {

// Gives an item a new name, also on another file system, where it is copied and then removed.
// EEXIST where something has the new name. Where the original cannot be removed the copy goes
// again, unless some of the original is gone by then.
FileError moveItem(const QString &source, const QString &destination);

} // namespace platform
