// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/ChildExit.h"

#include "Platform/Core/Processes/ChildReaper.h"
#include "Platform/Core/Processes/ProcessDescriptor.h"
#include "Platform/Core/Threads/MainThread.h"

#include <QEventLoop>
#include <QSocketNotifier>

#include <poll.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <thread>

namespace platform {
namespace {

// As waitid(), whatever signals come.
int waitFor(pid_t child, siginfo_t &end, int options)
{
    int result = 0;
    do {
        result = ::waitid(P_PID, static_cast<id_t>(child), &end, options);
    } while (result != 0 && errno == EINTR);
    return result;
}

// Setting up an event loop takes longer than what ends as fast as that.
constexpr int atOnce = 1; // ms

bool endsWithin(const Descriptor &process, int milliseconds)
{
    pollfd end{process.number(), POLLIN, 0};
    return ::poll(&end, 1, milliseconds) > 0;
}

void waitUntilItCanBeReaped(pid_t child)
{
    siginfo_t end{};
    waitFor(child, end, WEXITED | WNOWAIT);
}

} // namespace

// Under the lock. Reaps the child unless that is somebody's task.
void ChildExit::look()
{
    const bool reaps = m_reaper == Reaper::Nobody;
    if (m_reaped || (m_ended && !reaps)) {
        return;
    }
    siginfo_t end{};
    const auto result = waitFor(m_child, end, WEXITED | WNOHANG | (reaps ? 0 : WNOWAIT));
    if (result == 0 && end.si_pid == 0) {
        return;
    }
    m_ended = true;
    m_reaped = reaps || result != 0;
    if (result == 0) {
        m_status = end.si_status;
    }
}

bool ChildExit::hasEnded()
{
    const std::lock_guard lock(m_mutex);
    look();
    return m_ended;
}

int ChildExit::status()
{
    const std::lock_guard lock(m_mutex);
    return m_status;
}

void ChildExit::wait()
{
    std::unique_lock lock(m_mutex);
    while (!m_reaped) {
        if (m_reaper == Reaper::Nobody) {
            waitAsReaper(lock);
        } else {
            m_reaperDone.wait(lock);
        }
    }
}

void ChildExit::waitAsReaper(std::unique_lock<std::mutex> &lock)
{
    m_reaper = Reaper::Waiter;
    lock.unlock();
    waitUntilItCanBeReaped(m_child);
    lock.lock();
    m_reaper = Reaper::Nobody;
    look();
    m_reaperDone.notify_all();
}

void ChildExit::waitAndPumpEvents()
{
    Descriptor process;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_reaped) {
            process = openProcess(m_child);
        }
    }
    if (process.isOpen() && !endsWithin(process, atOnce)) {
        QEventLoop loop;
        QSocketNotifier end(process.number(), QSocketNotifier::Read);
        QObject::connect(&end, &QSocketNotifier::activated, &loop, [&] {
            end.setEnabled(false); // else it keeps an inner loop, which the end waits for, busy
            loop.quit();
        });
        loop.exec();
    } else if (!process.isOpen()) {
        pumpEventsUntil([this] { return hasEnded(); });
    }
    while (!hasEnded()) {
        runPendingMainThreadCalls();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    wait();
}

void ChildExit::signal(int number)
{
    const std::lock_guard lock(m_mutex);
    look();
    if (!m_ended) {
        ::kill(m_child, number);
    }
}

void ChildExit::reapInBackground()
{
    {
        const std::lock_guard lock(m_mutex);
        look();
        if (m_reaped || m_reaper != Reaper::Nobody) {
            return;
        }
        m_reaper = Reaper::Background;
    }
    ChildReaper::take(shared_from_this());
}

void ChildExit::reapAtEnd()
{
    std::unique_lock lock(m_mutex);
    waitAsReaper(lock);
}

void ChildExit::leaveToOthers()
{
    const std::lock_guard lock(m_mutex);
    m_reaper = Reaper::Nobody;
    m_reaperDone.notify_all();
}

} // namespace platform
