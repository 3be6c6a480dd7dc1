// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Trees/CopyProgress.h"

#include <sys/types.h>

#include <algorithm>
#include <chrono>

namespace platform {

// The size of the pieces in which the contents of a file are copied: as large as possible without a
// progress, otherwise such that each takes about a twentieth of a second, whatever the disk's
// speed.
class CopyPieces {
public:
    // The progress may be null.
    explicit CopyPieces(CopyProgress *progress) : m_progress(progress) {}

    bool areToEnd() const { return m_progress != nullptr && m_progress->isCancelled(); }

    // How long the next piece may be, in bytes.
    off_t size() const { return m_progress != nullptr ? m_size : maxWithoutProgress; }

    // A piece of that size is copied.
    void add(off_t count)
    {
        if (m_progress == nullptr) {
            return;
        }
        m_all += count;
        m_progress->addBytes(static_cast<std::uint64_t>(count));
        if (count >= m_size) { // most files are smaller and need no clock
            adapt();
        }
    }

    // All is copied: what the pieces left out were holes.
    void finish(off_t size)
    {
        if (m_progress != nullptr && size > m_all) {
            m_progress->addBytes(static_cast<std::uint64_t>(size - m_all));
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    // Reflinks have to begin and end at whole blocks, which these sizes are multiples of.
    static constexpr off_t least = off_t(1) << 16U;
    static constexpr off_t most = off_t(1) << 28U;
    static constexpr off_t maxWithoutProgress = off_t(1) << 30U;
    static constexpr auto wanted = std::chrono::milliseconds(50);

    void adapt()
    {
        const auto now = Clock::now();
        const auto took = now - m_last;
        if (m_last != Clock::time_point() && took < wanted / 2) {
            m_size = std::min(m_size * 2, most);
        } else if (m_last != Clock::time_point() && took > wanted * 2) {
            m_size = std::max(m_size / 2, least);
        }
        m_last = now;
    }

    CopyProgress *m_progress;
    off_t m_size = off_t(1) << 22U;
    off_t m_all = 0;
    Clock::time_point m_last;
};

} // namespace platform
