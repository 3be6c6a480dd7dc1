// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Threads/SerialWorker.h"

#include "Platform/Core/Threads/BackgroundThread.h"

#include <pthread.h>

#include <new>

namespace platform {
namespace {

constexpr auto idleStep = std::chrono::microseconds(250);
constexpr int maxIdleSteps = 80; // 20 ms

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

void SerialWorker::wakeThread(std::unique_lock<std::mutex> &lock)
{
    if (m_isForked) {
        workOnThisThread(lock);
        return;
    }
    if (!m_running) {
        start();
        return;
    }
    m_awake = true;
    lock.unlock();
    m_threads.wake.notify_one();
}

void SerialWorker::start()
{
    m_threads.thread = startThread([this] { run(); });
    // Where there is no thread to be had now, the next entry tries again.
    m_awake = m_running = m_threads.thread.joinable();
}

void SerialWorker::run()
{
    m_id.store(std::this_thread::get_id(), std::memory_order_relaxed);
    ::pthread_setname_np(::pthread_self(), m_threadName);
    int idleSteps = 0;
    while (!isStopped()) {
        const auto entries = work();
        idleSteps = entries == 0 ? idleSteps + 1 : 0;
        std::unique_lock lock(m_mutex);
        if (idleSteps > maxIdleSteps && m_added == m_finished) {
            m_awake = false;
            m_threads.wake.wait(lock, [this] { return m_awake || m_urgent; });
            m_awake = true;
            idleSteps = 0;
        } else if (entries < busy) {
            m_threads.wake.wait_for(lock, idleStep, [this] { return m_urgent; });
        }
        m_urgent = false;
    }
    // The system may give the same identifier to a new thread.
    m_id.store(std::thread::id(), std::memory_order_relaxed);
    const std::lock_guard lock(m_mutex);
    m_running = false;
    m_threads.done.notify_all();
}

std::size_t SerialWorker::work()
{
    const std::lock_guard working(m_working);
    return m_work();
}

// With no thread running.
void SerialWorker::workOnThisThread(std::unique_lock<std::mutex> &lock) noexcept
{
    m_awake = m_running = true;
    m_id.store(std::this_thread::get_id(), std::memory_order_relaxed);
    while (m_finished < m_added && !isStopped()) {
        lock.unlock();
        work();
        lock.lock();
    }
    m_id.store(std::thread::id(), std::memory_order_relaxed);
    m_awake = m_running = false;
    m_threads.done.notify_all();
}

void SerialWorker::finished(std::size_t entries)
{
    const std::lock_guard lock(m_mutex);
    m_finished += entries;
    m_threads.done.notify_all();
}

void SerialWorker::waitUntilIdle()
{
    if (isCurrentThread()) {
        return;
    }
    std::unique_lock lock(m_mutex);
    if (!m_running) {
        workOnThisThread(lock);
        return;
    }
    const auto last = m_added;
    while (m_finished < last && m_running && !isStopped()) {
        m_urgent = true;
        m_threads.wake.notify_one();
        m_threads.done.wait(lock);
    }
}

void SerialWorker::prepareForFork()
{
    if (isCurrentThread()) {
        return;
    }
    auto isPaused = m_working.try_lock();
    for (auto step = 0; !isPaused && step < maxIdleSteps; ++step) {
        std::this_thread::sleep_for(idleStep);
        isPaused = m_working.try_lock();
    }
    m_mutex.lock();
    m_isPaused = isPaused;
}

void SerialWorker::parentHasForked()
{
    if (isCurrentThread()) {
        return;
    }
    const auto isPaused = m_isPaused;
    m_mutex.unlock();
    if (isPaused) {
        m_working.unlock();
    }
}

void SerialWorker::childWasForked()
{
    if (isCurrentThread()) {
        return; // in the midst of the work, which goes on in the child
    }
    // Not destroyed: others are said to wait there, and to be joined, who do not exist here.
    ::new (&m_threads) Threads;
    m_finished = m_added; // what was waiting is the parent's
    m_awake = m_urgent = m_running = false;
    m_isForked = true;
    m_id.store(std::thread::id(), std::memory_order_relaxed);
    m_mutex.unlock();
    if (m_isPaused) {
        m_working.unlock();
    } else {
        m_stopped.store(true, std::memory_order_relaxed); // what it works with is in no order
    }
}

std::size_t SerialWorker::pending()
{
    const std::lock_guard lock(m_mutex);
    return m_added - m_finished;
}

bool SerialWorker::stop(std::chrono::milliseconds maxWait)
{
    std::unique_lock lock(m_mutex);
    m_stopped.store(true, std::memory_order_relaxed);
    m_urgent = true;
    m_threads.wake.notify_one();
    m_threads.done.notify_all();
    const auto ended = [this] { return !m_running; };
    if (maxWait == std::chrono::milliseconds::max()) {
        m_threads.done.wait(lock, ended);
    } else if (!isCurrentThread()) {
        m_threads.done.wait_for(lock, maxWait, ended);
    }
    const bool hasEnded = ended();
    auto thread = std::move(m_threads.thread);
    lock.unlock();
    if (thread.joinable()) {
        hasEnded ? thread.join() : thread.detach();
    }
    return hasEnded;
}

} // namespace platform
