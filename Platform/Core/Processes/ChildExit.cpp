// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/ChildExit.h"

#include "Platform/Core/Processes/ProcessDescriptor.h"
#include "Platform/Core/Threads/BackgroundThread.h"
#include "Platform/Core/Threads/MainThread.h"

#include <QEventLoop>
#include <QSocketNotifier>

#include <poll.h>
#include <pthread.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <thread>
#include <utility>
#include <vector>

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
    pollfd end{process.fd(), POLLIN, 0};
    return ::poll(&end, 1, milliseconds) > 0;
}

} // namespace

// Under the lock. Reaps the child unless somebody waits for it.
void ChildExit::update()
{
    const bool reaps = !m_hasWaiter;
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
    update();
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
        if (m_hasWaiter) {
            m_waiterDone.wait(lock);
            continue;
        }
        m_hasWaiter = true;
        lock.unlock();
        siginfo_t end{};
        waitFor(m_child, end, WEXITED | WNOWAIT);
        lock.lock();
        m_hasWaiter = false;
        update();
        m_waiterDone.notify_all();
    }
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
        QSocketNotifier end(process.fd(), QSocketNotifier::Read);
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
    update();
    if (!m_ended) {
        ::kill(m_child, number);
    }
}

void ChildExit::reapInBackground()
{
    // Never destroyed: the threads run to the very end of the process.
    static auto *mutex = new std::mutex;
    static auto *postponed = new std::vector<std::shared_ptr<ChildExit>>;
    const std::lock_guard lock(*mutex);
    postponed->erase(std::remove_if(postponed->begin(), postponed->end(),
                                    [](const auto &child) { return child->hasEnded(); }),
                     postponed->end());
    if (!hasEnded() && !std::exchange(m_isInBackground, true) &&
        !startBackgroundThread([self = shared_from_this()] {
            ::pthread_setname_np(::pthread_self(), "reaper"); // not that of who started it
            self->wait();
        })) {
        postponed->push_back(shared_from_this()); // no thread: the next call reaps it
    }
}

} // namespace platform
