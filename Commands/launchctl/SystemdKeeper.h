// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/launchctl/JobKeeper.h"
#include "Commands/launchctl/LoadedMarks.h"
#include "Commands/launchctl/UserManager.h"

// Jobs as units of the systemd user manager. The units are made by the generator, from the job
// files; this only asks the manager to look and to start and stop.
class SystemdKeeper : public JobKeeper {
public:
    // What cannot be seen from the manager is noted in the folder.
    SystemdKeeper(std::unique_ptr<UserManager> manager, const QByteArray &controlFolder);

    QString load(const platform::LaunchJob &job) override;
    QString unload(const QByteArray &label) override;
    void await(const platform::LaunchJob &job) override;
    QString startAwaited(const platform::LaunchJob &job) override;
    QByteArrayList environment() override;
    void addToEnvironment(const QByteArrayList &variables) override;
    QString list(const QByteArray &label, QList<JobStatus> *jobs) override;

private:
    QString startLoaded(const platform::LaunchJob &job, const QByteArray &unit);
    QString unitObjection(const platform::LaunchJob &job, const QByteArray &unit,
                          const UnitState &state);
    bool isLoaded(const QByteArray &unit, const UnitState &state) const;

    std::unique_ptr<UserManager> m_manager;
    LoadedMarks m_marks;
};
