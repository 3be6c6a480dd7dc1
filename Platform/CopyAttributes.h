// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

// What a copy is apart from its contents.
namespace platform {

// Gives an open file or folder the extended attributes, for root the owner, then the mode and the
// times of another. Attributes that the file system or the process may not have are left out. 0,
// else the reason (errno).
int copyAttributes(int from, const struct stat &status, int to);

// The same for what cannot be opened, as far as that goes: a symbolic link, a pipe, a device.
void copyAttributesOfSpecial(const struct stat &status, int folder, const char *name);

} // namespace platform
