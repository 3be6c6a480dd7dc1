// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/SerialWorker.h"

#include <utility>
#include <vector>

namespace platform {

// Entries that are handled in the background, in the order in which they were added, a batch at a
// time. A Batch has add(entry), count(), isFull() and clear(), which keeps its memory for the next
// entries.
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
                m_waiting.push_back(std::exchange(m_spare, Batch()));
            }
            m_waiting.back().add(entry);
        });
    }

    void waitUntilIdle() { m_worker.waitUntilIdle(); }
    std::size_t pending() { return m_worker.pending(); }
    bool stop(std::chrono::milliseconds longest) { return m_worker.stop(longest); }
    bool isStopped() const { return m_worker.isStopped(); }
    bool isCurrentThread() const { return m_worker.isCurrentThread(); }

private:
    std::size_t handleWaiting()
    {
        std::vector<Batch> batches;
        {
            const auto lock = m_worker.lock();
            batches.swap(m_waiting);
        }
        std::size_t all = 0;
        for (const auto &batch : batches) {
            m_handle(batch);
            m_worker.finished(batch.count());
            all += batch.count();
        }
        if (!batches.empty()) {
            batches.front().clear();
            const auto lock = m_worker.lock();
            std::swap(m_spare, batches.front());
        }
        return all;
    }

    Handle m_handle;
    std::vector<Batch> m_waiting;
    Batch m_spare;
    SerialWorker m_worker; // ends before the rest does
};

} // namespace platform
