// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <string>

// Makes this process, and so the tools that it starts, the same whoever has started it:
// environment, folder, umask, signals, timers, resource limits, nice value, I/O class, scheduling,
// processors, memory policy, timer slack, personality, OOM score, cgroup, session and its keys. Not
// changed: the audit's login number, which says who it was, and namespaces, which none but root's
// processes can have brought.
//
// Empty, or what could not be undone and why. It is fatal where tools would do their work by
// halves.
std::string cleanState(bool *isFatal);
