// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Shared/Tasks/ZQTaskEx.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Support/Children.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/StandardOutputCapture.h"

namespace test {

// Begins a new log; what it says so far, without the header.
void startTaskLog();
QStringList taskLog();

// What the work reports, and where. Standard output is not the test's own meanwhile.
class TaskReports {
public:
    explicit TaskReports(const std::function<void()> &work);

    const QStringList &printed() const { return m_printed; }
    const QStringList &logged() const { return m_logged; }
    const QStringList &console() const { return m_console; }

private:
    QStringList m_printed;
    QStringList m_logged;
    QStringList m_console;
};

// Rows "path" and "message" of a test of what the synchronous variants refuse.
void addPathsThatAreNotExecutable();

// A file with execute permission that the system cannot execute.
QString fileThatIsNoProgram();

// Waits until the command is there and runs.
std::shared_ptr<platform::ChildProcess> launched(const ZQTaskEx::Task &task);

} // namespace test
