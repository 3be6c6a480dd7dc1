// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bus/BusConnection.h"

#include <algorithm>
#include <cerrno>

namespace platform {

int BusConnection::open(const char *address, Kind kind, Deadline deadline)
{
    sd_bus *bus = nullptr;
    auto result = ::sd_bus_new(&bus);
    m_bus.reset(bus);
    if (result >= 0) {
        result = ::sd_bus_set_address(bus, address);
    }
    if (result >= 0) {
        result = ::sd_bus_set_bus_client(bus, kind == Kind::MessageBus ? 1 : 0);
    }
    if (result >= 0) {
        result = ::sd_bus_start(bus);
    }
    return result < 0 ? result
                      : processUntil([bus] { return ::sd_bus_is_ready(bus) > 0; }, deadline);
}

int BusConnection::processUntil(const std::function<bool()> &done, Deadline deadline)
{
    while (!done()) {
        auto result = ::sd_bus_process(m_bus.get(), nullptr);
        if (result == 0 && std::chrono::steady_clock::now() >= deadline) {
            return -ETIMEDOUT;
        }
        if (result == 0) {
            result = ::sd_bus_wait(m_bus.get(), timeLeft(deadline));
        }
        if (result < 0 && result != -EINTR) {
            return result;
        }
    }
    return 0;
}

std::uint64_t BusConnection::timeLeft(Deadline deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
        deadline - std::chrono::steady_clock::now());
    return static_cast<std::uint64_t>(std::max<std::int64_t>(left.count(), 1));
}

} // namespace platform
