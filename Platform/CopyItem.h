// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/FileError.h"

namespace platform {

class CopyProgress;

// Copies an item, a folder with all that is in it, under a new name, with modes, times and extended
// attributes; for root, also owners. Symbolic links are copied as links. EEXIST where something has
// the new name. The copy has that name only when it is whole; nothing is left of one that fails.
//
// With a progress, which is told how far it is and can cancel it, the memory for it does not depend
// on the size; a folder is copied on several threads, with hard links among its files kept.
FileError copyItem(const QString &source, const QString &destination,
                   CopyProgress *progress = nullptr);

} // namespace platform
