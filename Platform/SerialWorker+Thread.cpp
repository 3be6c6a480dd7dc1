// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/SerialWorker.h"

#include <pthread.h>

#include <utility>

// The worker's side.
namespace platform {
namespace {

constexpr auto lingerStep = std::chrono::microseconds(250);
constexpr int lingerSteps = 80; // 20 ms

// A batch ends at the latest after this many jobs.
constexpr std::size_t largestBatch = 1024;

// Having found fewer jobs than this, the worker lets more gather before it looks again.
constexpr std::size_t busy = 256;

} // namespace

void SerialWorker::run()
{
    m_id.store(std::this_thread::get_id(), std::memory_order_relaxed);
    ::pthread_setname_np(::pthread_self(), m_threadName);
    int idleSteps = 0;
    while (m_state.load() != State::Stopped) {
        const auto jobs = runWaiting();
        idleSteps = jobs == 0 ? idleSteps + 1 : 0;
        if (idleSteps > lingerSteps) {
            sleep();
            idleSteps = 0;
        } else if (jobs < busy) {
            linger();
        }
    }
    dropWaiting();
    // The system may give the same identifier to a new thread.
    m_id.store(std::thread::id(), std::memory_order_relaxed);
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    m_done.notify_all();
}

SerialWorker::Job *SerialWorker::takeWaiting()
{
    auto *newest = m_newest.exchange(nullptr);
    Job *oldest = nullptr;
    while (newest != nullptr) {
        auto *const next = std::exchange(newest->next, oldest);
        oldest = std::exchange(newest, next);
    }
    return oldest;
}

// The job that a running job added, else the oldest of those given.
SerialWorker::Job *SerialWorker::takeNext(Job *&jobs)
{
    if (m_nextInLine == nullptr) {
        return jobs == nullptr ? nullptr : std::exchange(jobs, jobs->next);
    }
    auto *const next = std::exchange(m_nextInLine, m_nextInLine->next);
    if (m_nextInLine == nullptr) {
        m_endOfLine = &m_nextInLine;
    }
    return next;
}

std::size_t SerialWorker::runWaiting()
{
    auto *jobs = takeWaiting();
    for (std::size_t all = 0;;) {
        std::size_t batch = 0;
        for (Job *job = nullptr; batch < largestBatch && (job = takeNext(jobs)) != nullptr;
             ++batch) {
            take(job);
        }
        if (batch == 0) {
            return all;
        }
        m_endBatch();
        finished(batch);
        all += batch;
    }
}

void SerialWorker::take(Job *job)
{
    const bool stopped = m_state.load(std::memory_order_relaxed) == State::Stopped;
    m_take(job, stopped ? Fate::Drop : Fate::Run);
}

void SerialWorker::finished(std::size_t jobs)
{
    m_finished.fetch_add(jobs);
    if (m_waiting.load() > 0) {
        const std::lock_guard lock(m_mutex);
        m_done.notify_all();
    }
}

void SerialWorker::linger()
{
    std::unique_lock lock(m_mutex);
    m_wake.wait_for(lock, lingerStep, [this] { return m_urgent; });
    m_urgent = false;
}

void SerialWorker::sleep()
{
    auto state = State::Awake;
    if (!m_state.compare_exchange_strong(state, State::Asleep)) {
        return;
    }
    if (m_newest.load() == nullptr) {
        std::unique_lock lock(m_mutex);
        m_wake.wait(lock, [this] { return m_urgent || m_state.load() != State::Asleep; });
        m_urgent = false;
    }
    state = State::Asleep;
    m_state.compare_exchange_strong(state, State::Awake);
}

} // namespace platform
