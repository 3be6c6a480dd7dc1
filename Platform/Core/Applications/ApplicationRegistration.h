// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/FileError.h"

namespace platform {

// Makes an application known to the desktop, or known anew: of an application package, a desktop
// entry named after its identifier, in the user's data folder; a desktop entry is taken there as it
// is (freedesktop.org's Desktop Entry specification 1.5). Anything else is refused, EINVAL.
FileError registerApplication(const QString &path);

} // namespace platform
