// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/SerialWorker.h"

#include "Platform/SignalsBlocked.h"

#include <pthread.h>

#include <system_error>

namespace platform {
namespace {

constexpr auto lingerStep = std::chrono::microseconds(250);
constexpr int lingerSteps = 80; // 20 ms

// Having found fewer entries than this, the worker lets more gather before it looks again.
constexpr std::size_t busy = 256;

} // namespace

SerialWorker::SerialWorker(const char *threadName, std::function<std::size_t()> work)
    : m_threadName(threadName), m_work(std::move(work))
{
}

SerialWorker::~SerialWorker()
{
    stop(std::chrono::milliseconds::max());
}

void SerialWorker::rouse(std::unique_lock<std::mutex> &lock)
{
    if (!m_running) {
        start();
        return;
    }
    m_awake = true;
    lock.unlock();
    m_wake.notify_one();
}

void SerialWorker::start()
{
    const SignalsBlocked blocked;
    try {
        m_thread = std::thread([this] { run(); });
        m_awake = m_running = true;
    } catch (const std::system_error &) {
        // No thread to be had now. The next entry tries again, and nobody waits meanwhile.
    }
}

void SerialWorker::run()
{
    m_id.store(std::this_thread::get_id(), std::memory_order_relaxed);
    ::pthread_setname_np(::pthread_self(), m_threadName);
    int idleSteps = 0;
    while (!isStopped()) {
        const auto entries = m_work();
        idleSteps = entries == 0 ? idleSteps + 1 : 0;
        std::unique_lock lock(m_mutex);
        if (idleSteps > lingerSteps && m_added == m_finished) {
            m_awake = false;
            m_wake.wait(lock, [this] { return m_awake || m_urgent; });
            m_awake = true;
            idleSteps = 0;
        } else if (entries < busy) {
            m_wake.wait_for(lock, lingerStep, [this] { return m_urgent; });
        }
        m_urgent = false;
    }
    // The system may give the same identifier to a new thread.
    m_id.store(std::thread::id(), std::memory_order_relaxed);
    const std::lock_guard lock(m_mutex);
    m_running = false;
    m_done.notify_all();
}

void SerialWorker::finished(std::size_t entries)
{
    const std::lock_guard lock(m_mutex);
    m_finished += entries;
    m_done.notify_all();
}

void SerialWorker::waitUntilIdle()
{
    if (isCurrentThread()) {
        return;
    }
    std::unique_lock lock(m_mutex);
    const auto last = m_added;
    while (m_finished < last && m_running && !isStopped()) {
        m_urgent = true;
        m_wake.notify_one();
        m_done.wait(lock);
    }
}

std::size_t SerialWorker::pending()
{
    const std::lock_guard lock(m_mutex);
    return m_added - m_finished;
}

bool SerialWorker::stop(std::chrono::milliseconds longest)
{
    std::unique_lock lock(m_mutex);
    m_stopped.store(true, std::memory_order_relaxed);
    m_urgent = true;
    m_wake.notify_one();
    m_done.notify_all();
    const auto ended = [this] { return !m_running; };
    if (longest == std::chrono::milliseconds::max()) {
        m_done.wait(lock, ended);
    } else if (!isCurrentThread()) {
        m_done.wait_for(lock, longest, ended);
    }
    const bool hasEnded = ended();
    auto thread = std::move(m_thread);
    lock.unlock();
    if (thread.joinable()) {
        hasEnded ? thread.join() : thread.detach();
    }
    return hasEnded;
}

} // namespace platform
