// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>

namespace test {

// A program of the system that runs beside the test and is ended with it.
class Command : public QProcess {
public:
    Command(const QString &program, const QStringList &arguments);
    ~Command() override;

    // Waits, serving the event loop, until the output holds the text. False after 30 seconds.
    bool waitForOutput(const QString &text);

    // All that the program has written to standard output so far.
    QString output();

private:
    QByteArray m_output;
};

} // namespace test
