// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace test {

// Listens at "/dev/log" in the sandbox, in place of the system log, and keeps the lines that this
// process and others write to the system console.
class ConsoleCapture {
public:
    ConsoleCapture();
    ~ConsoleCapture();
    ConsoleCapture(const ConsoleCapture &) = delete;
    ConsoleCapture &operator=(const ConsoleCapture &) = delete;

    // The messages so far, without priority, time and program name.
    QStringList lines();

private:
    int m_socket;
    QStringList m_lines;
};

} // namespace test
