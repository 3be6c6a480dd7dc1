// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Threads/WorkerThreads.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <functional>

// Looks after a start of the listener whether it fails, and says why: the last lines that the
// journal has of the job's unit, or what the service manager tells. Each but the constructor: on a
// worker.
class StartWatch {
public:
    // Tell gets a text for people, on a worker.
    using Tell = std::function<void(const QString &failure)>;

    // The workers outlive it.
    StartWatch(platform::WorkerThreads &workers, Tell tell)
        : m_workers(workers), m_tell(std::move(tell))
    {
    }

    // What happens from now on belongs to the start.
    void begin();

    // The job was loaded, or not, for that objection: tells it, and looks several times within half
    // a minute, each second of which is that long.
    void follow(const QString &objection, std::chrono::milliseconds second);

    // The listener is about to be stopped: looks once more, at what was until now. Does not wait.
    void end();

private:
    using Microseconds = qint64; // of the system's clock, as the journal counts

    void look(Microseconds begin, Microseconds end) const;

    platform::WorkerThreads &m_workers;
    Tell m_tell;
    std::atomic<Microseconds> m_begin = 0; // of the start that is watched; 0: none
};
