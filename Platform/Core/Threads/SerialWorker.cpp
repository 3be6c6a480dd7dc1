// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Threads/SerialWorker.h"

#include "Platform/Core/Threads/BackgroundThread.h"

#include <pthread.h>

#include <new>

namespace platform {

SerialWorker::SerialWorker(const char *threadName, std::function<std::size_t()> work)
    : m_threadName(threadName), m_work(std::move(work))
{
}

SerialWorker::~SerialWorker()
{
    stop(std::chrono::milliseconds::max());
}

void SerialWorker::add(const std::function<void()> &put)
{
    std::unique_lock lock(m_mutex);
    if (isStopped()) {
        return;
    }
    put();
    ++m_added;
    if (m_isForked && !m_running) {
        workHere(lock);
    } else if (m_running) {
        lock.unlock();
        m_threads.wake.notify_one();
    } else {
        // Where there is no thread to be had now, the next entry tries again.
        m_threads.thread = startThread([this] { run(); });
        m_running = m_threads.thread.joinable();
    }
}

void SerialWorker::run()
{
    m_id.store(std::this_thread::get_id(), std::memory_order_relaxed);
    ::pthread_setname_np(::pthread_self(), m_threadName);
    std::unique_lock lock(m_mutex);
    const auto hasWork = [this] { return m_finished < m_added && !m_isPaused; };
    while (m_threads.wake.wait(lock, [&] { return hasWork() || isStopped(); }), !isStopped()) {
        work(lock);
    }
    // The system may give the same identifier to a new thread.
    m_id.store(std::thread::id(), std::memory_order_relaxed);
    m_running = false;
    m_threads.done.notify_all();
}

// Unlocks meanwhile.
void SerialWorker::work(std::unique_lock<std::mutex> &lock)
{
    m_isWorking = true;
    lock.unlock();
    const auto entries = m_work();
    lock.lock();
    m_isWorking = false;
    m_finished += entries;
    m_threads.done.notify_all();
}

// With no thread running.
void SerialWorker::workHere(std::unique_lock<std::mutex> &lock) noexcept
{
    m_running = true;
    m_id.store(std::this_thread::get_id(), std::memory_order_relaxed);
    while (m_finished < m_added && !isStopped()) {
        work(lock);
    }
    m_id.store(std::thread::id(), std::memory_order_relaxed);
    m_running = false;
    m_threads.done.notify_all();
}

void SerialWorker::waitUntilIdle()
{
    if (isCurrentThread()) {
        return;
    }
    std::unique_lock lock(m_mutex);
    if (!m_running) {
        workHere(lock);
        return;
    }
    const auto last = m_added;
    m_threads.done.wait(lock, [&] { return m_finished >= last || !m_running || isStopped(); });
}

void SerialWorker::prepareForFork()
{
    if (isCurrentThread()) {
        return;
    }
    std::unique_lock lock(m_mutex);
    m_isPaused = true;
    m_threads.done.wait_for(lock, std::chrono::milliseconds(20), [this] { return !m_isWorking; });
    lock.release(); // stays locked
}

void SerialWorker::parentHasForked()
{
    if (isCurrentThread()) {
        return;
    }
    m_isPaused = false;
    m_mutex.unlock();
    m_threads.wake.notify_one();
}

void SerialWorker::childWasForked()
{
    if (isCurrentThread()) {
        return; // in the midst of the work, which goes on in the child
    }
    // Not destroyed: others are said to wait there, and to be joined, who do not exist here.
    ::new (&m_threads) Threads;
    m_finished = m_added; // what was waiting is the parent's
    m_running = m_isPaused = false;
    m_isForked = true;
    m_id.store(std::thread::id(), std::memory_order_relaxed);
    // What it works with is in no order in the midst of the work.
    m_stopped.store(isStopped() || m_isWorking, std::memory_order_relaxed);
    m_mutex.unlock();
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
