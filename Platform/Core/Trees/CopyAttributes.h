// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

// What a copy is apart from its contents.
namespace platform {

// Gives an open file or folder, for root the owner, then the extended attributes, the mode and the
// times of another, in this order since each may take away what comes behind it. Attributes that
// the file system or the process may not have are left out. 0, else the reason (errno).
int copyAttributes(int from, const struct stat &status, int to);

// The same for what cannot be opened, as far as that goes: a symbolic link, a pipe, a device. It
// must be in a folder in which nobody else can replace it. 0, else the reason (errno).
int copyAttributesOfSpecial(const struct stat &status, int folder, const char *name);

// Takes away the access control lists that a new item has from the folder it was made in. 0, else
// the reason (errno).
int clearAccessLists(int item);

} // namespace platform
