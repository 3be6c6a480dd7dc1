// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Threads/SerialWorker.h"

#include <utility>

namespace platform {

// Entries that are handled in the background, in the order in which they were added, a batch at a
// time. A Batch has add(entry), count() and clear(), which may keep memory for the next entries.
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
        m_worker.add([&] { m_waiting.add(entry); });
    }

    void waitUntilIdle() { m_worker.waitUntilIdle(); }
    std::size_t pending() { return m_worker.pending(); }
    bool stop(std::chrono::milliseconds longest) { return m_worker.stop(longest); }

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
        {
            const auto lock = m_worker.lock();
            std::swap(m_waiting, m_handled);
        }
        m_handle(m_handled);
        const auto count = m_handled.count();
        m_handled.clear();
        return count;
    }

    Handle m_handle;
    Batch m_waiting;
    Batch m_handled;       // the work's own
    SerialWorker m_worker; // ends before the rest does
};

} // namespace platform
