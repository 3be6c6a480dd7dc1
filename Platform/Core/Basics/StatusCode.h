// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

namespace platform {

// Result of a system operation as the console names it; 0 is success.
enum class Status : int {
    NoError = 0,
    Parameter = -50,              // a value that the operation does not know
    OutputBufferTooSmall = -25340 // the text does not fit
};

// GetMacOSStatusErrorString: the name of a code, e.g. "paramErr"; empty for an unknown one.
const char *statusName(Status status);

// GetMacOSStatusCommentString: what it means; empty for an unknown one.
const char *statusComment(Status status);

} // namespace platform
