// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace platform {

// A path that leads to just what is open, wherever that is by now and whatever has its name: for
// calls that take no descriptor, or not one that was opened with O_PATH.
inline QByteArray pathOfDescriptor(int descriptor)
{
    return "/proc/self/fd/" + QByteArray::number(descriptor);
}

} // namespace platform
