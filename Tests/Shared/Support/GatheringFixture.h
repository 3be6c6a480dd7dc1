// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/ConsoleCapture.h"

#include <QStringList>

namespace test {

// For tests of the log gathering: empty libraries, an empty desktop, no temporary folder, a new
// console, and a user who reads each alert and clicks its button.
class GatheringFixture {
public:
    GatheringFixture();
    ~GatheringFixture();
    GatheringFixture(const GatheringFixture &) = delete;
    GatheringFixture &operator=(const GatheringFixture &) = delete;

    // A path below the home.
    static QString home(const QString &below);
    static QString desktop(const QString &name = {});
    // What is gathered lies here before it is an archive; below it, under its own path.
    static QString temporaryFolder(const QString &path = {});

    // The names on the desktop.
    static QStringList desktopNames();
    // "Ostrel Logs.zip" holds exactly these files, given by their own paths, in the folders that
    // they came from, and nothing else, and two unpackers find no fault with it. Null, or what is
    // wrong.
    static QString complaintAboutArchive(const QStringList &files,
                                         const QString &name = QStringLiteral("Ostrel Logs.zip"));
    // The bytes of one of them.
    static QByteArray gathered(const QString &file,
                               const QString &name = QStringLiteral("Ostrel Logs.zip"));

    // The alerts so far: "title|message|names of the buttons|modality".
    QStringList alerts() const { return m_alerts; }
    QStringList console() { return m_console.lines(); }

private:
    QStringList m_alerts;
    AlertWatcher m_user;
    ConsoleCapture m_console;
};

// What stands in alerts() for one of these.
QString modalAlert(const QString &title, const QString &message);

} // namespace test
