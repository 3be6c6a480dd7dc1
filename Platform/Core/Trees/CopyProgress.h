// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <atomic>
#include <cstdint>
#include <mutex>

namespace platform {

// How far a copy is, for other threads, which can also cancel it. Any thread.
class CopyProgress {
public:
    // A copy that is cancelled ends with ECANCELED, at the latest before its final name is given.
    // False where the copy has, or is just being given, that name: it will be whole.
    bool cancel();
    bool isCancelled() const { return m_state.load(std::memory_order_relaxed) == Cancelled; }

    // For the copy itself, before it gives the final name. False: it is cancelled.
    bool beginPublishing();

    // Bytes of files and of the texts of links; holes count, too.
    std::uint64_t bytes() const { return m_bytes.load(std::memory_order_relaxed); }
    void addBytes(std::uint64_t count) { m_bytes.fetch_add(count, std::memory_order_relaxed); }
    // Files, folders, links and what else there is, the copied item itself included.
    std::uint64_t items() const { return m_items.load(std::memory_order_relaxed); }
    void addItem() { m_items.fetch_add(1, std::memory_order_relaxed); }

    // What was begun last: a path below the copied item; empty for that itself.
    QByteArray currentItem() const;
    void setCurrentItem(const QByteArray &folder, const QByteArray &name);

private:
    enum State : std::uint8_t { Copying, Publishing, Cancelled };

    bool leave(State state);

    std::atomic<State> m_state = Copying;
    std::atomic<std::uint64_t> m_bytes = 0;
    std::atomic<std::uint64_t> m_items = 0;
    mutable std::mutex m_mutex;
    QByteArray m_folder;
    QByteArray m_name;
};

} // namespace platform
