// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <string>

// Makes this process, and so the tools that it starts, independent of who has started it:
// environment, folder, umask, signals, timers, resource limits, nice value, I/O class, scheduling,
// processors, memory policy, timer slack, personality, OOM score, cgroup, session and its keys. Not
// changed are the audit's login number, which says who it was, and the namespaces, which only a
// process of root's can have set.
//
// Returns what could not be undone and why, or an empty text. It is fatal if it could make tools
// stop halfway.
std::string cleanState(bool *isFatal);
