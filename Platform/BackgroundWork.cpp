// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/BackgroundWork.h"

#include "Platform/MainThread.h"
#include "Platform/SignalsBlocked.h"

#include <QCoreApplication>

#include <chrono>
#include <future>
#include <system_error>
#include <thread>

namespace platform {
namespace {

constexpr auto step = std::chrono::milliseconds(10);

// No thread where there is none to be had; the task has not been begun then.
std::thread threadFor(std::packaged_task<void()> &task)
{
    const SignalsBlocked blocked;
    try {
        return std::thread([&task] { task(); });
    } catch (const std::system_error &) {
        return {};
    }
}

} // namespace

void performInBackground(const std::function<void()> &work)
{
    if (QCoreApplication::instance() == nullptr || !isMainThread()) {
        work();
        return;
    }
    std::packaged_task<void()> task(work);
    auto result = task.get_future();
    auto thread = threadFor(task);
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
