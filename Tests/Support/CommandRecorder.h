// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace test {

// Replaces a system command, in a sandbox with its own commands, and records every run. When the
// object is destroyed, the system's command is restored, if there was one.
class CommandRecorder {
public:
    // After noting the run, a recorder goes on with these lines of shell ("$@" are the arguments).
    explicit CommandRecorder(const QString &path, const QString &shell = {});
    ~CommandRecorder();
    CommandRecorder(const CommandRecorder &) = delete;
    CommandRecorder &operator=(const CommandRecorder &) = delete;

    // All runs of all recorders since the last forget(), in order: the command's name, then each
    // argument in brackets.
    static QStringList runs();
    static void forget();

private:
    QString m_path;
};

} // namespace test
