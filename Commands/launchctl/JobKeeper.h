// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/Jobs/LaunchJob.h"

#include <QList>
#include <QPair>

// One job of the session, as it is now.
struct JobStatus {
    QByteArray label;
    qint64 pid = 0;     // 0 while the program does not run
    int lastStatus = 0; // its last exit status; negative: the signal that ended it
    QList<QPair<QByteArray, QByteArray>> details;
};

// Keeps the jobs of a session. Its operations answer with what went wrong, null for nothing.
class JobKeeper {
public:
    JobKeeper() = default;
    virtual ~JobKeeper() = default;
    JobKeeper(const JobKeeper &) = delete;
    JobKeeper &operator=(const JobKeeper &) = delete;

    // Loads the job and starts it if it is to start at load.
    virtual QString load(const platform::LaunchJob &job) = 0;

    // Ends the job's program and unloads the job.
    virtual QString unload(const QByteArray &label) = 0;

    // The job waits for the graphical session, unless it was loaded or unloaded by hand before.
    virtual void await(const platform::LaunchJob &job) = 0;

    // Loads a job that still waits, and starts it.
    virtual QString startAwaited(const platform::LaunchJob &job) = 0;

    // The variables, "NAME=value", that a job is started with.
    virtual QByteArrayList environment() = 0;
    virtual void addToEnvironment(const QByteArrayList &variables) = 0;

    // All jobs, or the one of that label.
    virtual QString list(const QByteArray &label, QList<JobStatus> *jobs) = 0;
};

inline QString notLoaded(const QByteArray &label)
{
    return QStringLiteral("%1: not loaded").arg(platform::readableName(label));
}

inline QString alreadyLoaded(const QByteArray &label)
{
    return QStringLiteral("%1: already loaded").arg(platform::readableName(label));
}
