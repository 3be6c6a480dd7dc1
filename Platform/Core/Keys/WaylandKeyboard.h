// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Keys/KeyboardLayout.h"

namespace platform {

// The keymap that the compositor gives to the program's windows, with the group that is switched on
// and the modifiers that are held while one of them has the keyboard. Nothing where the program is
// not connected to a compositor or the seat has no keyboard. Main thread only.
std::optional<KeyboardLayout> waylandKeyboardLayout();

} // namespace platform
