// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/Jobs/LaunchJob.h"

#include <QSet>

// The unit files in the folder that the manager gives to its generators.
class JobUnits {
public:
    explicit JobUnits(QByteArray folder) : m_folder(std::move(folder)) {}

    // Makes the units of all sound jobs in a folder of job files. What an earlier folder already
    // had, and what is already a unit of another origin, stays as it is. One line on standard error
    // for each file that gets no unit.
    void addFolder(const QByteArray &jobFolder);

private:
    void addFile(const QByteArray &jobFile);
    bool write(const platform::LaunchJob &job, QString *error) const;

    QByteArray m_folder;
    QSet<QByteArray> m_labels;
};
