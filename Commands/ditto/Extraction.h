// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/ditto/Arguments.h"

// Unpacks the archive. A folder that is not there yet appears with all that is in the archive, or
// not at all. In an existing folder, files and links replace those of the same names. False after a
// complaint or when interrupted.
bool extract(const Arguments &arguments);
