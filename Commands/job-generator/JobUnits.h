// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/Jobs/LaunchJob.h"

#include <QSet>

// The unit files in the folder that the manager gives to its generators.
class JobUnits {
public:
    explicit JobUnits(QByteArray folder) : m_folder(std::move(folder)) {}

    // Makes the units of all valid jobs in a folder of job files. Labels of an earlier folder and
    // units of another origin stay as they are. Each file that gets no unit has a line on standard
    // error.
    void addFolder(const QByteArray &jobFolder);

private:
    void addFile(const QByteArray &jobFile);
    bool write(const platform::LaunchJob &job, QString *error) const;

    QByteArray m_folder;
    QSet<QByteArray> m_labels;
};
