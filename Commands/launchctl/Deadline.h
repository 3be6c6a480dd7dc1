// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>

// When a command has to be over. Who runs us waits ten seconds.
class Deadline {
public:
    explicit Deadline(std::chrono::milliseconds time)
        : m_end(std::chrono::steady_clock::now() + time)
    {
    }

    // Never negative.
    std::chrono::milliseconds left() const
    {
        const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(
            m_end - std::chrono::steady_clock::now());
        return std::max(time, std::chrono::milliseconds::zero());
    }

    bool isOver() const { return left() == std::chrono::milliseconds::zero(); }

private:
    std::chrono::steady_clock::time_point m_end;
};
