// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

namespace platform {

// While one of these lives, other processes of the same user can neither trace this one nor read
// its memory or its part of /proc nor take its descriptors, and it leaves no core dump. They may
// overlap; the end of the last one restores what was before the first. Any thread.
//
// Whoever traces already goes on; see tracerOfThisProcess(). Programs that this one starts are like
// any others.
class UntraceableProcess {
public:
    UntraceableProcess();
    ~UntraceableProcess();
    UntraceableProcess(const UntraceableProcess &) = delete;
    UntraceableProcess &operator=(const UntraceableProcess &) = delete;
};

bool isUntraceable();

// The process that traces a thread of this one, 0 for none. While this process is untraceable there
// can be none afterwards, either.
pid_t tracerOfThisProcess();

} // namespace platform
