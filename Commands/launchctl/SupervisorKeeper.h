// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/launchctl/JobKeeper.h"

#include <QByteArrayList>
#include <QDeadlineTimer>

#include <optional>

// Jobs of a session without a systemd user manager: our own supervisor keeps them.
class SupervisorKeeper : public JobKeeper {
public:
    explicit SupervisorKeeper(QDeadlineTimer deadline) : m_deadline(deadline) {}

    QString load(const platform::LaunchJob &job) override;
    QString unload(const QByteArray &label) override;
    void await(const platform::LaunchJob & /*job*/) override {} // nobody knows of it yet
    QString startAwaited(const platform::LaunchJob &job) override;
    QByteArrayList environment() override;
    void addToEnvironment(const QByteArrayList &variables) override;
    QString list(const QByteArray &label, QList<JobStatus> *jobs) override;

private:
    enum class Start { No, Yes };

    // The answer without its first word. Nothing, with the reason in error, for a failure; an empty
    // error means that no supervisor runs.
    std::optional<QByteArrayList> ask(const QByteArrayList &request, Start start, QString *error);

    QDeadlineTimer m_deadline;
};
