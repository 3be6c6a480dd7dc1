// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Threads/SerialWorker.h"

#include <deque>
#include <utility>

namespace platform {

// Entries that are handled in the background, in the order in which they were added, a batch at a
// time. A Batch has add(entry), count() and isFull().
template <typename Batch>
class SerialQueue {
public:
    // Called on the queue's own thread. Once isStopped(), it is to leave out what is left.
    using Handle = std::function<void(const Batch &)>;

    SerialQueue(const char *threadName, Handle handle)
        : m_handle(std::move(handle)), m_worker(threadName, [this] { return handleWaiting(); })
    {
    }

    // Any thread.
    template <typename Entry>
    void add(const Entry &entry)
    {
        m_worker.add([&] {
            if (m_waiting.empty() || m_waiting.back().isFull()) {
                m_waiting.emplace_back();
            }
            m_waiting.back().add(entry);
        });
    }

    void waitUntilIdle() { m_worker.waitUntilIdle(); }
    std::size_t pending() { return m_worker.pending(); }
    bool stop(std::chrono::milliseconds maxWait) { return m_worker.stop(maxWait); }

    // Around a fork() of the process: as SerialWorker has them.
    void prepareForFork() { m_worker.prepareForFork(); }
    void parentHasForked() { m_worker.parentHasForked(); }
    void childWasForked()
    {
        if (!isCurrentThread()) {
            m_waiting.clear();
        }
        m_worker.childWasForked();
    }

    bool isStopped() const { return m_worker.isStopped(); }
    bool isCurrentThread() const { return m_worker.isCurrentThread(); }

private:
    std::size_t handleWaiting()
    {
        Batch batch;
        {
            const auto lock = m_worker.lock();
            batch = std::move(m_waiting.front());
            m_waiting.pop_front();
        }
        m_handle(batch);
        return batch.count();
    }

    Handle m_handle;
    std::deque<Batch> m_waiting;
    SerialWorker m_worker; // ends before the rest does
};

} // namespace platform
