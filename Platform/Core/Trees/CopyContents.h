// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

namespace platform {

class CopyProgress;

// Copies the contents of an open file into an empty one that is open for writing: shares the blocks
// where the file system can, keeps holes. 0, else the reason (errno). A progress is told of every
// piece; the pieces are so small that cancelling takes effect soon.
int copyContents(int from, const struct stat &status, int to, CopyProgress *progress = nullptr);

} // namespace platform
