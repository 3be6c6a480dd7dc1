// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/StatusCode.h"

namespace platform {

const char *statusName(Status status)
{
    switch (status) {
    case Status::NoError:
        return "noErr";
    case Status::Parameter:
        return "paramErr";
    case Status::OutputBufferTooSmall:
        return "kUCOutputBufferTooSmall";
    }
    return "";
}

const char *statusComment(Status status)
{
    switch (status) {
    case Status::NoError:
        return "no error";
    case Status::Parameter:
        return "a parameter is out of its range";
    case Status::OutputBufferTooSmall:
        return "the output buffer is too small for the text";
    }
    return "";
}

} // namespace platform
