// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace platform {

// Whether the path leads to a folder that the desktop presents as one file: one with a package's
// ending (".app", ".bundle", ".framework", ".plugin", ".prefPane", in any case) behind a name.
bool isFilePackage(const QString &path);

} // namespace platform
