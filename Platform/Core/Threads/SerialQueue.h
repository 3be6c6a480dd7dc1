// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Threads/SerialWorker.h"

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
                beginBatch();
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
    // Fresh memory costs more than the entries that are put into it.
    static constexpr std::size_t maxSpares = 16;

    void beginBatch()
    {
        if (m_spares.empty()) {
            m_waiting.emplace_back();
        } else {
            m_waiting.push_back(std::move(m_spares.back()));
            m_spares.pop_back();
        }
    }

    std::size_t handleWaiting()
    {
        std::vector<Batch> batches;
        {
            const auto lock = m_worker.lock();
            batches.swap(m_waiting);
        }
        std::size_t all = 0;
        for (auto &batch : batches) {
            const auto count = batch.count();
            m_handle(batch);
            batch.clear();
            m_worker.finished(count);
            all += count;
        }
        keepSpares(std::move(batches));
        return all;
    }

    // Keeps the memory of some batches, or of only one if there was nothing to do. The rest is
    // freed after the lock is released.
    void keepSpares(std::vector<Batch> used)
    {
        const auto maxKept = used.empty() ? 1 : maxSpares;
        const auto lock = m_worker.lock();
        for (; !used.empty() && m_spares.size() < maxKept; used.pop_back()) {
            m_spares.push_back(std::move(used.back()));
        }
        for (; m_spares.size() > maxKept; m_spares.pop_back()) {
            used.push_back(std::move(m_spares.back()));
        }
    }

    Handle m_handle;
    std::vector<Batch> m_waiting;
    std::vector<Batch> m_spares;
    SerialWorker m_worker; // ends before the rest does
};

} // namespace platform
