// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/ditto/Arguments.h"

// Makes the archive: all of it under its name, or nothing. False after a complaint or when
// interrupted.
//
// Others may do with the archive what they may do with the source, as far as the process's mask
// goes: what is made of a private folder is private.
//
// Symbolic links stay links. A file is archived with the size that it had when its turn came.
// Anything but files, folders and links is left out, with a message. Anything that cannot be read
// ends the work.
bool compress(const Arguments &arguments);
