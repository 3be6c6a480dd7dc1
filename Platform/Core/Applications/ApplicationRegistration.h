// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/FileError.h"

namespace platform {

// Registers an application with the desktop, or registers it again. For an application package,
// writes a desktop entry named after its identifier into the user's data folder; a desktop entry is
// copied there unchanged (freedesktop.org's Desktop Entry specification 1.5). Anything else is
// refused, EINVAL.
FileError registerApplication(const QString &path);

} // namespace platform
