// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/ditto/Arguments.h"

// Makes the archive: all of it under its name, or nothing. False after a complaint or when
// interrupted.
//
// Symbolic links stay links. A file is taken as large as it was when its turn came. What is neither
// file, folder nor link is left out, with a word; what cannot be read ends the work.
bool compress(const Arguments &arguments);
