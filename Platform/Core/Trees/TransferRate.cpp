// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/TransferRate.h"

namespace platform {
namespace {

// The share of the last interval: a rate that follows changes within a few and does not flicker.
constexpr double newShare = 0.3;
// A small file takes as long as that many bytes of a large one.
constexpr double bytesPerItem = 32768;

double workOf(const TransferRate::Amount &amount)
{
    return static_cast<double>(amount.bytes) + bytesPerItem * static_cast<double>(amount.items);
}

} // namespace

void TransferRate::note(const Amount &done, Clock::time_point now)
{
    const auto seconds = std::chrono::duration<double>(now - m_last).count();
    if (seconds <= 0) {
        return;
    }
    const auto share = m_isFirst ? 1 : newShare;
    const Amount step{done.bytes - m_done.bytes, done.items - m_done.items};
    m_bytesPerSecond += share * (static_cast<double>(step.bytes) / seconds - m_bytesPerSecond);
    m_workPerSecond += share * (workOf(step) / seconds - m_workPerSecond);
    m_done = done;
    m_last = now;
    m_isFirst = false;
}

std::optional<double> TransferRate::secondsFor(const Amount &left) const
{
    if (m_workPerSecond <= 0) {
        return std::nullopt;
    }
    return workOf(left) / m_workPerSecond;
}

} // namespace platform
