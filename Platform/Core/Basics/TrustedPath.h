// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <sys/types.h>

#include <string>
#include <string_view>

// Who can change a file, or put another in its place. Plain C++ over the system's calls: the helper
// that runs as root is built with it.
namespace platform {

// A file that nobody but the trusted owners can change or replace, or why it is none.
struct TrustedFile {
    Descriptor file;       // the file that was judged, opened by O_PATH; open when it is trusted
    std::string path;      // of the file, without links, "." and ".."
    int error = 0;         // EPERM where others can change it, else the system's error number
    std::string objection; // one line for a log, naming what is wrong where; empty when trusted
};

// Walks an absolute path from "/", folder by folder and link by link, and judges each of them as it
// is opened, so that what was judged is what the descriptor leads to. All must belong to root or to
// this user (0: root alone) and be writable by nobody else. A group counts as others, unless it is
// the user's private one: his primary group, named as he is, that is nobody else's. The sticky bit
// of a folder does not help. Only regular files are trusted. Entries of an access control list are
// bounded by the group's permissions, except those that count as the user's own; for these a list
// is refused, and so is a file system that another user's program serves (FUSE). Believed are what
// other file systems say of owners, and the lists of users and groups, as far as the system
// enumerates them. Any thread.
TrustedFile openTrusted(std::string_view path, uid_t user = 0);

} // namespace platform
