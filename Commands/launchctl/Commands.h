// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/launchctl/JobKeeper.h"

#include <QByteArrayList>
#include <QDeadlineTimer>

#include <memory>

// The commands of launchctl. Each answers with the exit status: 0 when all was done; else every
// failure has its line on standard error.
class Commands {
public:
    explicit Commands(QDeadlineTimer deadline) : m_deadline(deadline) {}

    int load(const QByteArrayList &files);
    int unload(const QByteArrayList &files);
    int remove(const QByteArray &label);
    int list(const QByteArray &label);

private:
    // Who keeps the jobs of this session; nothing, with a line on standard error, when that cannot
    // be found out.
    JobKeeper *keeper();
    QString loadFile(const QByteArray &file);
    QString unloadFile(const QByteArray &file);
    QString unloadLabel(const QByteArray &label);

    QDeadlineTimer m_deadline;
    std::unique_ptr<JobKeeper> m_keeper;
    QString m_keeperError;
};
