// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

namespace platform {

// The thread behind a SerialQueue: takes the waiting jobs in the order in which they were added,
// one at a time. Adding a job takes no lock, and no system call while the thread is about: after
// work the thread looks for more every 250 microseconds, and only after 20 milliseconds without any
// does it sleep until it is woken. It starts with the first job.
class SerialWorker {
public:
    struct Job {
        Job *next = nullptr;
    };
    enum class Fate { Run, Drop };

    // take owns each job it gets; it is asked to drop what is left when the worker is stopped.
    using Take = std::function<void(Job *, Fate)>;

    // endBatch is called after a number of jobs, before they count as finished.
    SerialWorker(const char *threadName, Take take, std::function<void()> endBatch);

    // Stops, and waits for the running job however long it takes.
    ~SerialWorker();

    SerialWorker(const SerialWorker &) = delete;
    SerialWorker &operator=(const SerialWorker &) = delete;

    // Any thread. A job added by a running job is next in line.
    void add(Job *job);

    // Returns when all jobs added before the call have finished; inside a job at once.
    void waitUntilIdle();

    // Jobs that have been added and have not finished.
    std::size_t pending() const;

    // Drops all jobs that have not begun, now and later, and ends the thread. Waits at most longest
    // for the running job; false when that was not enough.
    bool stop(std::chrono::milliseconds longest);

private:
    enum class State { Unstarted, Awake, Asleep, Stopped };

    void rouse();
    void start();
    void dropWaiting();

    void run();
    Job *takeWaiting();
    Job *takeNext(Job *&jobs);
    std::size_t runWaiting();
    void take(Job *job);
    void finished(std::size_t jobs);
    void linger();
    void sleep();
    bool isCurrentThread() const;

    const char *m_threadName;
    Take m_take;
    std::function<void()> m_endBatch;

    // What callers change at every job has a cache line of its own.
    alignas(64) std::atomic<Job *> m_newest = nullptr; // linked from the newest to the oldest
    std::atomic<std::uint64_t> m_added = 0;

    alignas(64) std::atomic<State> m_state = State::Unstarted;
    std::atomic<std::thread::id> m_id;
    std::atomic<std::uint64_t> m_finished = 0;
    std::atomic<int> m_waiting = 0;
    Job *m_nextInLine = nullptr; // the worker's own, like its end
    Job **m_endOfLine = &m_nextInLine;

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_done;
    bool m_urgent = false;
    bool m_ended = true;
    std::thread m_thread;
};

} // namespace platform
