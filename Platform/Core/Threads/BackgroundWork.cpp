// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Threads/BackgroundWork.h"

#include "Platform/Core/Threads/BackgroundThread.h"
#include "Platform/Core/Threads/MainThread.h"

#include <QCoreApplication>

#include <chrono>
#include <future>

namespace platform {
namespace {

constexpr auto step = std::chrono::milliseconds(10);

} // namespace

void performInBackground(const std::function<void()> &work)
{
    if (QCoreApplication::instance() == nullptr || !isMainThread()) {
        work();
        return;
    }
    std::packaged_task<void()> task(work);
    auto result = task.get_future();
    auto thread = startThread([&task] { task(); });
    if (!thread.joinable()) {
        work();
        return;
    }
    const auto isDone = [&] {
        return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    if (!pumpEventsUntil(isDone)) {
        while (result.wait_for(step) != std::future_status::ready) {
            runPendingMainThreadCalls();
        }
    }
    thread.join();
    result.get();
}

} // namespace platform
