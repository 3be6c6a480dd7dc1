// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

namespace platform {

// Opens what is at a path below an open folder without following any symbolic link on the way, so
// that nobody who may write there can lead it astray. As openat(); the path has no ".." in it.
int openBeneath(int folder, const char *path, int flags);

} // namespace platform
