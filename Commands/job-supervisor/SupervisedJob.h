// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/Jobs/LaunchJob.h"

#include <sys/types.h>

#include <chrono>
#include <optional>

// One job of the supervisor: its program and when that is started again.
class SupervisedJob {
public:
    using Clock = std::chrono::steady_clock;

    explicit SupervisedJob(platform::LaunchJob job) : m_job(std::move(job)) {}

    const platform::LaunchJob &job() const { return m_job; }

    // 0 while the program does not run.
    pid_t pid() const { return m_pid; }

    // The last exit status; negative: the signal that ended the program.
    int lastStatus() const { return m_lastStatus; }

    int restarts() const { return m_restarts; }
    bool isStopping() const { return m_stopping; }
    bool isOver() const { return m_stopping && m_pid == 0; }
    QByteArray state() const;

    // Starts the program in a session of its own. Answers with why it could not, null when it runs.
    QString start();

    // The program has ended and was waited for; the status is that of waitpid.
    void ended(int waitStatus);

    // Asks the program to end, and all of its group; five seconds later they are ended.
    void stop();

    // When runDueAction() has to be called next.
    std::optional<Clock::time_point> due() const { return m_due; }

    // Does what is due: the next start, or the end of a program that does not end by itself.
    void runDueAction();

private:
    bool shouldRestart() const;

    platform::LaunchJob m_job;
    pid_t m_pid = 0;
    int m_lastStatus = 0;
    int m_restarts = 0;
    bool m_stopping = false;
    Clock::time_point m_lastStart;
    std::optional<Clock::time_point> m_due;
};
