// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

namespace platform {

// Worker threads that belong to one object of the main thread. The object stays until the last of
// them has returned: the destructor asks them to end and meanwhile runs their calls onto the main
// thread.
class WorkerThreads {
public:
    WorkerThreads() = default;
    ~WorkerThreads();
    WorkerThreads(const WorkerThreads &) = delete;
    WorkerThreads &operator=(const WorkerThreads &) = delete;

    // Runs body on a thread of its own. From the main thread or one of the workers; does nothing
    // after end(). False, after a line in the system console, when there is no thread to be had.
    bool start(std::function<void()> body);

    // Sleeps on a worker. False, and at once, when the workers are to end.
    bool sleepFor(std::chrono::milliseconds time);

    // True on a worker whose owner has asked it to end; false on every other thread.
    static bool currentThreadShouldStop();

    // Asks all workers to end and waits for them. Main thread only.
    void end();

    // How many have not returned yet.
    int running() const { return m_running.load(std::memory_order_acquire); }

private:
    struct Worker {
        std::thread thread;
        std::atomic<bool> finished = false;
    };

    void reap();

    std::list<Worker> m_workers;
    std::atomic<int> m_running = 0;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::atomic<bool> m_ending = false; // written under the mutex
};

} // namespace platform
