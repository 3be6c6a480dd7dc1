// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/FileError.h"
#include "Shared/Basics/ZQLocalPaths.h"

#include <QStringList>

#include <functional>

// One gathering of logs, crash reports and preferences into an archive on the desktop, from
// beginning to end, without any message to the user. For the troubleshooting utilities.
class ZQLogGathering {
public:
    enum class Outcome { Failed, NothingFound, NotCompressed, Compressed };

    ZQLogGathering(QStringList names, QStringList additionalFiles);

    // Once. Two gatherings of one user, in whatever programs, come one after the other. Leaves the
    // process's current directory at the last folder listed. Any thread.
    Outcome run();

    // Why it failed, in the system's words; null where it did not.
    const QString &failure() const { return m_failure; }
    // Null where there is none.
    const QString &archive() const { return m_archive; }
    // The folders that are there and could not be listed, each with the system's words.
    const QStringList &unreadableFolders() const { return m_unreadableFolders; }

private:
    using Choice = std::function<bool(const QString &fileName, const QString &appName)>;

    bool prepareFolder();
    bool gatherDomain(Domain domain);
    bool gatherFrom(const QString &folder, const Choice &choice);
    bool gatherPreferences(const QString &folder);
    bool gatherFile(const QString &folder, const QString &name);
    bool gatherAdditionalFiles();
    Outcome compress();
    QStringList namesIn(const QString &folder);
    // Writes a console line in the format, which has one "%@"; false.
    bool fail(const QString &format, const platform::FileError &error);

    QStringList m_names;
    QStringList m_additionalFiles;
    QString m_folder; // what becomes the archive
    unsigned m_count = 0;
    QString m_archive;
    QString m_failure;
    QStringList m_unreadableFolders;
};
