// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/job-supervisor/SupervisedJob.h"

#include "Commands/job-supervisor/ProgramStart.h"
#include "Platform/Core/Text/Console.h"

#include <sys/wait.h>

#include <algorithm>
#include <csignal>

namespace {

constexpr std::chrono::seconds endTimeout{5};

} // namespace

QByteArray SupervisedJob::state() const
{
    if (m_pid != 0) {
        return m_stopping ? "ending" : "running";
    }
    return m_due ? "waiting for the next start" : "ended";
}

QString SupervisedJob::start()
{
    m_due.reset();
    auto started = startProgram(m_job);
    m_lastStart = Clock::now();
    m_pid = started.pid;
    if (m_pid == 0 && m_job.keepAlive != platform::LaunchJob::KeepAlive::Never) {
        m_due = m_lastStart + m_job.throttleInterval; // there was no process to be had
    }
    return started.error;
}

bool SupervisedJob::shouldRestart() const
{
    switch (m_job.keepAlive) {
    case platform::LaunchJob::KeepAlive::Never:
        return false;
    case platform::LaunchJob::KeepAlive::Always:
        return true;
    case platform::LaunchJob::KeepAlive::AfterFailure:
        return m_lastStatus != 0;
    case platform::LaunchJob::KeepAlive::AfterSuccess:
        return m_lastStatus == 0;
    }
    return false;
}

void SupervisedJob::ended(int waitStatus)
{
    m_pid = 0;
    m_due.reset();
    m_lastStatus = WIFSIGNALED(waitStatus) ? -WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
    if (!m_stopping && shouldRestart()) {
        // At once after a run that was long enough.
        m_due = std::max(Clock::now(), m_lastStart + m_job.throttleInterval);
    }
    if (!m_stopping && m_lastStatus != 0) {
        platform::consoleLine(QStringLiteral("%1: ended with the status %2")
                                  .arg(platform::readableName(m_job.label))
                                  .arg(m_lastStatus));
    }
}

void SupervisedJob::stop()
{
    if (m_stopping) {
        return;
    }
    m_stopping = true;
    m_due.reset();
    if (m_pid != 0) {
        ::kill(-m_pid, SIGTERM);
        ::kill(-m_pid, SIGCONT); // a stopped program could not end
        m_due = Clock::now() + endTimeout;
    }
}

void SupervisedJob::runDueAction()
{
    if (!m_due || Clock::now() < *m_due) {
        return;
    }
    m_due.reset();
    if (m_stopping) {
        ::kill(-m_pid, SIGKILL);
        return;
    }
    ++m_restarts;
    const auto error = start();
    if (!error.isNull()) {
        platform::consoleLine(
            QStringLiteral("%1: %2").arg(platform::readableName(m_job.label), error));
    }
}
