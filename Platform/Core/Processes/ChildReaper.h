// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Processes/ChildExit.h"

namespace platform {

// Reaps the children that nobody waits for, as soon as they end: one thread that sleeps until one
// does, started with the first child and never ended.
class ChildReaper {
public:
    static void take(const std::shared_ptr<ChildExit> &child);
};

} // namespace platform
