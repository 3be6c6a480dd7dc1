// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/FileTree.h"

namespace test {

// For tests of the file manager: a new log, a new console and a folder of its own for each.
class FileManagerFixture {
public:
    FileManagerFixture();

    std::string operator/(const std::string &name) const { return m_folder / name; }
    QString path(const std::string &name) const { return text(m_folder / name); }
    const Folder &folder() const { return m_folder; }

    // What was logged, and written to the system console, so far.
    static QStringList logged();
    QStringList console() { return m_console.lines(); }

private:
    Folder m_folder;
    ConsoleCapture m_console;
};

bool isRoot();

} // namespace test
