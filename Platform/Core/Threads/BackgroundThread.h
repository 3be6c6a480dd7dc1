// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Threads/SignalsBlocked.h"

#include <system_error>
#include <thread>

namespace platform {

// Runs body on a thread of its own that gets no signals. Not joinable, with body not called, when
// there is no thread to be had.
template <typename Body>
std::thread startThread(Body body)
{
    const SignalsBlocked blocked;
    try {
        return std::thread(std::move(body));
    } catch (const std::system_error &) {
        return {};
    }
}

// The same on a thread that nobody waits for, not even at the end of the process: it must not use
// what is destroyed then. False when there is no thread to be had.
template <typename Body>
bool startBackgroundThread(Body body)
{
    auto thread = startThread(std::move(body));
    const auto hasStarted = thread.joinable();
    if (hasStarted) {
        thread.detach();
    }
    return hasStarted;
}

} // namespace platform
