// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <functional>
#include <memory>

namespace platform {

// A connection to a D-Bus socket whose calls end at a deadline. The library's own calls would wait
// 90 seconds for the other side's first message. Plain C++. One thread.
class BusConnection {
public:
    using Deadline = std::chrono::steady_clock::time_point;
    enum class Kind { MessageBus, Peer };

    // Connects to the D-Bus address. Negative is the system's error number, here and below;
    // -ETIMEDOUT at the deadline.
    int open(const char *address, Kind kind, Deadline deadline);

    // Serves what comes until done() is true.
    int processUntil(const std::function<bool()> &done, Deadline deadline);

    sd_bus *get() const { return m_bus.get(); }

    // Microseconds to the deadline, at least 1: to the library, 0 is its own time-out.
    static std::uint64_t timeLeft(Deadline deadline);

private:
    struct Close {
        // Without waiting for what is still to be sent.
        void operator()(sd_bus *bus) const { ::sd_bus_close_unref(bus); }
    };
    std::unique_ptr<sd_bus, Close> m_bus;
};

struct FreeBusMessage {
    void operator()(sd_bus_message *message) const { ::sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, FreeBusMessage>;

} // namespace platform
