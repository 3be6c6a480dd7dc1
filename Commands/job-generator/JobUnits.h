// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/Jobs/LaunchJob.h"

#include <QSet>

// The unit files in the folder that the manager gives to its generators.
class JobUnits {
public:
    explicit JobUnits(QByteArray folder) : m_folder(std::move(folder)) {}

    // Makes the unit of a valid job. Labels of an earlier file and units of another origin stay as
    // they are. A file that gets no unit has a line on standard error.
    void addFile(const QByteArray &jobFile);

    // After the jobs: makes the unit that waits for the graphical session and starts those that are
    // to run at log-in, where there are any.
    void addLogIn();

private:
    bool write(const platform::LaunchJob &job, QString *error);

    QByteArray m_folder;
    QSet<QByteArray> m_labels;
    bool m_startsAtLogIn = false;
};
