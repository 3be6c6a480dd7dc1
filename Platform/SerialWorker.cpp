// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/SerialWorker.h"

#include <pthread.h>

#include <csignal>
#include <system_error>
#include <utility>

// The callers' side.
namespace platform {
namespace {

// Signals are for the program's own threads.
class SignalsBlocked {
public:
    SignalsBlocked()
    {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &m_previous);
    }
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_previous, nullptr); }
    SignalsBlocked(const SignalsBlocked &) = delete;
    SignalsBlocked &operator=(const SignalsBlocked &) = delete;

private:
    sigset_t m_previous{};
};

} // namespace

SerialWorker::SerialWorker(const char *threadName, Take take, std::function<void()> endBatch)
    : m_threadName(threadName), m_take(std::move(take)), m_endBatch(std::move(endBatch))
{
}

SerialWorker::~SerialWorker()
{
    stop(std::chrono::milliseconds::max());
}

void SerialWorker::add(Job *job)
{
    // Counted first, so that a job never finishes uncounted.
    m_added.fetch_add(1, std::memory_order_relaxed);
    if (isCurrentThread()) {
        job->next = nullptr;
        *m_endOfLine = job;
        m_endOfLine = &job->next;
        return;
    }
    auto *newest = m_newest.load(std::memory_order_relaxed);
    do {
        job->next = newest;
    } while (!m_newest.compare_exchange_weak(newest, job));
    // Sequentially consistent, as in sleep(): either the worker sees the job or this sees it
    // asleep.
    if (m_state.load() != State::Awake) {
        rouse();
    }
}

void SerialWorker::rouse()
{
    auto state = State::Asleep;
    if (m_state.compare_exchange_strong(state, State::Awake)) {
        { // The worker may be between its last look and its sleep.
            const std::lock_guard lock(m_mutex);
        }
        m_wake.notify_one();
    } else if (state == State::Unstarted) {
        start();
    } else if (state == State::Stopped) {
        dropWaiting();
    }
}

void SerialWorker::start()
{
    const std::lock_guard lock(m_mutex);
    if (m_state.load() != State::Unstarted) {
        return;
    }
    const SignalsBlocked blocked;
    try {
        m_thread = std::thread([this] { run(); });
        m_ended = false;
        m_state.store(State::Awake);
    } catch (const std::system_error &) {
        // No thread to be had now; the next job tries again, and nobody waits meanwhile.
    }
}

void SerialWorker::dropWaiting()
{
    std::size_t dropped = 0;
    for (auto *job = takeWaiting(); job != nullptr; ++dropped) {
        m_take(std::exchange(job, job->next), Fate::Drop);
    }
    finished(dropped);
}

void SerialWorker::waitUntilIdle()
{
    const auto last = m_added.load(std::memory_order_relaxed);
    if (isCurrentThread() || m_finished.load() >= last) {
        return;
    }
    std::unique_lock lock(m_mutex);
    m_waiting.fetch_add(1);
    m_urgent = true;
    m_wake.notify_one();
    m_done.wait(lock, [&] {
        return m_finished.load() >= last || m_ended || m_state.load() == State::Stopped;
    });
    m_waiting.fetch_sub(1);
}

std::size_t SerialWorker::pending() const
{
    // In this order, so that it is never negative.
    const auto done = m_finished.load();
    return m_added.load() - done;
}

bool SerialWorker::stop(std::chrono::milliseconds longest)
{
    std::thread thread;
    std::unique_lock lock(m_mutex);
    m_state.store(State::Stopped);
    m_urgent = true;
    m_wake.notify_one();
    m_done.notify_all();
    const auto ended = [this] { return m_ended; };
    if (longest == std::chrono::milliseconds::max()) {
        m_done.wait(lock, ended);
    } else if (!isCurrentThread()) {
        m_done.wait_for(lock, longest, ended);
    }
    const bool hasEnded = m_ended;
    thread = std::move(m_thread);
    lock.unlock();

    if (thread.joinable()) {
        hasEnded ? thread.join() : thread.detach();
    }
    dropWaiting();
    return hasEnded;
}

bool SerialWorker::isCurrentThread() const
{
    return m_id.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

} // namespace platform
