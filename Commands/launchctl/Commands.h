// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/launchctl/JobKeeper.h"

#include <QByteArrayList>
#include <QDeadlineTimer>

#include <memory>

class GraphicalSession;
class SessionMonitor;

// The commands of launchctl. Each answers with the exit status: 0 when all was done; else every
// failure has its line on standard error.
class Commands {
public:
    // What is done by hand, and each step of what is done at log-in, ends in that time.
    explicit Commands(std::chrono::milliseconds timeout) : m_timeout(timeout) { forgetKeeper(); }

    int load(const QByteArrayList &files);
    int unload(const QByteArrayList &files);
    int remove(const QByteArray &label);
    int list(const QByteArray &label);

    // Waits for the user's graphical session and its display, then starts the jobs of log-in.
    int logIn();

private:
    enum class FromPrograms { No, Yes };

    static int complain(const QString &text);

    // Who keeps the jobs of this session; nothing, with a line on standard error, when that cannot
    // be found out.
    JobKeeper *keeper();
    QString loadFile(const QByteArray &file);
    QString unloadFile(const QByteArray &file);
    QString unloadLabel(const QByteArray &label);

    // Has the keeper start jobs on the session's display. False while that is not known; programs
    // of the session are asked where wanted.
    bool bringDisplay(const GraphicalSession &session, FromPrograms fromPrograms);
    void awaitDisplay(const SessionMonitor &monitor);
    void forgetKeeper();

    std::chrono::milliseconds m_timeout;
    QDeadlineTimer m_deadline;
    std::unique_ptr<JobKeeper> m_keeper;
    QString m_keeperError;
};
