// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <sys/types.h>

#include <functional>

namespace platform {

// What the process list tells about one process.
class ProcessInformation {
public:
    ProcessInformation(pid_t pid, QByteArray executable)
        : m_pid(pid), m_executable(std::move(executable))
    {
    }

    pid_t pid() const { return m_pid; }

    // "CFBundleExecutable": the executable's full path. "CFBundleName": its bundle's name, null
    // where there is none. Null for any other key.
    QString value(const QString &key) const;

    // The executable's path as the system has it, without a copy.
    const QByteArray &executable() const { return m_executable; }

private:
    pid_t m_pid;
    QByteArray m_executable;
};

// Calls visit for each process whose executable this user may know, until it returns true. Returns
// whether it did. A program that was replaced or deleted while it runs is listed under its old
// path.
bool findProcess(const std::function<bool(const ProcessInformation &)> &visit);

} // namespace platform
