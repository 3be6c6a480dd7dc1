// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <memory>
#include <mutex>

namespace platform {

// The end of a running child of this process: waiting for it, asking for it, its status. The child
// is reaped exactly once, and never signalled after that. Any thread.
class ChildExit : public std::enable_shared_from_this<ChildExit> {
public:
    // The status of a child that somebody else has reaped.
    static constexpr int unknownStatus = -1;

    explicit ChildExit(pid_t child) : m_child(child) {}

    pid_t processIdentifier() const { return m_child; }

    bool hasEnded();

    // The exit status, or the number of the signal that ended it. Only after the end.
    int status();

    // Returns when the child has ended; it is reaped then.
    void wait();

    // The same, dispatching events meanwhile. Main thread with an application only. When the
    // application quits meanwhile, only calls from other threads are served until the end.
    void waitAndPumpEvents();

    // Sends the signal to a child that has not ended.
    void signal(int number);

    // From now on nobody has to wait: a thread reaps the child when it ends.
    void reapInBackground();

private:
    void update();

    const pid_t m_child;
    std::mutex m_mutex;
    std::condition_variable m_waiterDone;
    bool m_hasWaiter = false;      // its wait must not find the number taken by another process
    bool m_isInBackground = false; // under the lock of reapInBackground()
    bool m_ended = false;
    bool m_reaped = false;
    int m_status = unknownStatus;
};

} // namespace platform
