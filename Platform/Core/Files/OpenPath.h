// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <QByteArray>

namespace platform {

enum class LastLink { Follow, Keep };

// Opens what a path leads to, with O_PATH and so without any right to it; relative to an open
// folder, or to the current one (AT_FDCWD). 0, else the reason (errno).
//
// Root follows a symbolic link only where that is root's own, or where it leads to something of the
// link's owner: otherwise others would decide where root works. EACCES for any other.
int openPath(int folder, const QByteArray &path, LastLink last, Descriptor &open);

} // namespace platform
