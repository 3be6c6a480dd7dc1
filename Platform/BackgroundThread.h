// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/SignalsBlocked.h"

#include <system_error>
#include <thread>

namespace platform {

// Runs body on a thread of its own that gets no signals and that nobody waits for, not even at the
// end of the process: it must not use what is destroyed then. False when there is no thread to be
// had.
template <typename Body>
bool startBackgroundThread(Body body)
{
    const SignalsBlocked blocked;
    try {
        std::thread(std::move(body)).detach();
    } catch (const std::system_error &) {
        return false;
    }
    return true;
}

} // namespace platform
