// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Threads/WorkerThreads.h"

#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Threads/BackgroundThread.h"
#include "Platform/Core/Threads/MainThread.h"

#include <pthread.h>

namespace platform {
namespace {

thread_local WorkerThreads *ownerOfCurrentThread = nullptr;

} // namespace

WorkerThreads::~WorkerThreads()
{
    end();
}

bool WorkerThreads::start(std::function<void()> body)
{
    const std::lock_guard lock(m_mutex);
    if (m_ending) {
        return true;
    }
    reap();
    auto &worker = m_workers.emplace_back();
    m_running.fetch_add(1, std::memory_order_relaxed);
    worker.thread = startThread([this, &worker, body = std::move(body)] {
        ownerOfCurrentThread = this;
        ::pthread_setname_np(::pthread_self(), "worker"); // for debuggers and "ps -L"
        body();
        worker.finished.store(true, std::memory_order_release);
        m_running.fetch_sub(1, std::memory_order_release);
    });
    if (!worker.thread.joinable()) {
        m_workers.pop_back();
        m_running.fetch_sub(1, std::memory_order_relaxed);
        consoleLog(QStringLiteral("Unable to start a thread."));
        return false;
    }
    return true;
}

bool WorkerThreads::sleepFor(std::chrono::milliseconds time)
{
    std::unique_lock lock(m_mutex);
    return !m_wake.wait_for(lock, time,
                            [this] { return m_ending.load(std::memory_order_relaxed); });
}

bool WorkerThreads::currentThreadShouldStop()
{
    // Without the lock: a worker may ask this in a tight loop.
    return ownerOfCurrentThread != nullptr &&
           ownerOfCurrentThread->m_ending.load(std::memory_order_relaxed);
}

void WorkerThreads::end()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending.store(true, std::memory_order_relaxed);
    }
    m_wake.notify_all();
    while (running() > 0) {
        runPendingMainThreadCalls();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const std::lock_guard lock(m_mutex);
    reap();
}

void WorkerThreads::reap()
{
    m_workers.remove_if([](Worker &worker) {
        if (!worker.finished.load(std::memory_order_acquire)) {
            return false;
        }
        worker.thread.join();
        return true;
    });
}

} // namespace platform
