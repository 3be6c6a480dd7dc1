// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace platform {

// Whether the path leads to something that this user may execute; a folder counts that it may look
// into.
bool isExecutable(const QString &path);

// The same for files alone.
bool isExecutableFile(const QString &path);

} // namespace platform
