// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Tests/Support/Faults/Faults.h"

#include <cstddef>

namespace test {

// What becomes of a call.
struct Strike {
    int error = 0; // fails with that
    bool fallsShort = false;
    bool interferes = false; // somebody does something right behind the call

    std::size_t cut(std::size_t size) const { return fallsShort && size > 1 ? size / 2 : size; }
};

// Counts a call and says what becomes of it.
Strike strike(Calls calls);

// Runs the attacker's action.
void interfere();

} // namespace test
