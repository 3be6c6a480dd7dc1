// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

namespace platform {

// The thread behind a SerialQueue. Adding costs no system call while the thread is awake: after its
// work it looks for more every 250 microseconds. Only after 20 milliseconds without work does it
// sleep until it is woken. It starts with the first entry. Where there is no thread to be had, and
// in a process that was forked and has none, the threads that wait do the work themselves.
class SerialWorker {
public:
    // work handles all that waits and returns how many entries that were. Called on the thread.
    SerialWorker(const char *threadName, std::function<std::size_t()> work);

    // Stops, and waits for the work to return however long it takes.
    ~SerialWorker();

    SerialWorker(const SerialWorker &) = delete;
    SerialWorker &operator=(const SerialWorker &) = delete;

    // Calls put, which adds an entry, while it holds the lock. Any thread; nothing happens after
    // stop().
    template <typename Put>
    void add(Put put)
    {
        std::unique_lock lock(m_mutex);
        if (!isStopped()) {
            put();
            ++m_added;
            if (!m_awake) {
                wakeThread(lock);
            }
        }
    }

    // Excludes add().
    std::unique_lock<std::mutex> lock() { return std::unique_lock(m_mutex); }

    // The work function reports that so many entries are handled.
    void finished(std::size_t entries);

    // Returns when all entries added before the call are done with, on the thread itself at once.
    void waitUntilIdle();

    // Entries that have been added and are not done with.
    std::size_t pending();

    // Ends the thread; work is to return without handling what is left. Waits at most maxWait for
    // it to do so; false when that was not enough.
    bool stop(std::chrono::milliseconds maxWait);

    // Around a fork() of the process, whatever its threads are at: the child's worker begins
    // without entries, and each that is added there is done with at once. Where the parent's does
    // not come to the end of some work in 20 milliseconds, the child's is stopped.
    void prepareForFork();
    void parentHasForked();
    void childWasForked();

    bool isStopped() const { return m_stopped.load(std::memory_order_relaxed); }
    bool isCurrentThread() const
    {
        return m_id.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

private:
    void wakeThread(std::unique_lock<std::mutex> &lock);
    void start();
    void run();
    std::size_t work();
    void workOnThisThread(std::unique_lock<std::mutex> &lock) noexcept;

    const char *m_threadName;
    std::function<std::size_t()> m_work;

    // What knows of other threads, none of which a forked child has.
    struct Threads {
        std::condition_variable wake;
        std::condition_variable done;
        std::thread thread;
    };

    std::mutex m_working; // held during the work; taken before the other one
    std::mutex m_mutex;
    Threads m_threads;
    std::uint64_t m_added = 0;
    std::uint64_t m_finished = 0;
    bool m_awake = false;  // will look for entries without being told
    bool m_urgent = false; // somebody waits for it to look
    bool m_running = false;
    bool m_isForked = false;
    bool m_isPaused = false; // for a fork

    std::atomic<bool> m_stopped = false;
    std::atomic<std::thread::id> m_id;
};

} // namespace platform
