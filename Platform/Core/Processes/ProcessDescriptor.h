// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <sys/syscall.h>

namespace platform {

// A descriptor of a process, which can be read when that has ended. Not open where the system has
// none to give. (The C library's own function cannot be called from C++ in all its versions.)
inline Descriptor openProcess(pid_t process)
{
    return Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0))); // NOLINT(*-vararg)
}

} // namespace platform
