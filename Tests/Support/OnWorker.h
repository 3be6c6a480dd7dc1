// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Threads/MainThread.h"

#include <atomic>
#include <thread>

namespace test {

// Runs work on a thread of its own while the main thread dispatches events; gives its result.
template <typename Work>
auto onWorker(Work work)
{
    decltype(work()) result{};
    std::atomic<bool> done = false;
    std::thread worker([&] {
        result = work();
        done = true;
    });
    platform::pumpEventsUntil([&] { return done.load(); });
    worker.join();
    return result;
}

} // namespace test
