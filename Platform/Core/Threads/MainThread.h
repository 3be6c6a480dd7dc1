// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>

// Calls onto the main thread: the thread of the application object and its event loop.
namespace platform {

bool isMainThread();

// Runs call on a later pass of the main event loop, in the order of the requests.
void performOnMainThread(std::function<void()> call);

// Runs call on the main thread and returns when it has returned; on the main thread at once.
// Whoever waits on the main thread for a thread that may call this must keep calling
// runPendingMainThreadCalls().
void performOnMainThreadAndWait(const std::function<void()> &call);

// Runs what performOnMainThread() and performOnMainThreadAndWait() have queued, no other events.
// Main thread only.
void runPendingMainThreadCalls();

// Takes and dispatches the next events, waiting at most maxWait for one. Main thread only.
void pumpEvents(std::chrono::milliseconds maxWait = std::chrono::milliseconds(10));

// Dispatches events until ended() is true, which it asks every 0.01 s. False, at once, when the
// application quits before that. Main thread only; may be nested.
bool pumpEventsUntil(const std::function<bool()> &ended);

} // namespace platform
