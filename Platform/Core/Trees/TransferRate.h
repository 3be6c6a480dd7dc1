// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace platform {

// How fast a copy is of late and how long it may still take.
class TransferRate {
public:
    using Clock = std::chrono::steady_clock;

    struct Amount {
        std::uint64_t bytes = 0;
        std::uint64_t items = 0;
    };

    explicit TransferRate(Clock::time_point start) : m_last(start) {}

    // What is done at a point of time, all in all.
    void note(const Amount &done, Clock::time_point now);

    // 0 before anything was noted.
    double bytesPerSecond() const { return m_bytesPerSecond; }

    // For what is left; none while that cannot be told.
    std::optional<double> secondsFor(const Amount &left) const;

private:
    Amount m_done;
    Clock::time_point m_last;
    bool m_isFirst = true;
    double m_bytesPerSecond = 0;
    double m_workPerSecond = 0;
};

} // namespace platform
