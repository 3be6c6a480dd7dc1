// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Shared/Tasks/TaskFixture.h"

#include "Platform/Core/Text/FileName.h"
#include "Shared/Log/ZQLog.h"

#include <QDir>
#include <QTest>

#include <chrono>
#include <thread>

namespace test {
namespace {

QString logFolder()
{
    return ::geteuid() == 0 ? localLogFolder() : userLogFolder();
}

} // namespace

void startTaskLog()
{
    ZQLog::finishWriting();
    clearLibraries();
    QDir().mkpath(logFolder());
    ZQLog::createNewLog();
}

QStringList taskLog()
{
    ZQLog::finishWriting();
    return body(generation(1, {}, logFolder()));
}

TaskReports::TaskReports(const std::function<void()> &work)
{
    ConsoleCapture console;
    m_printed = linesOf(work);
    m_logged = taskLog();
    m_console = console.lines();
}

void addPathsThatAreNotExecutable()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("message");
    const auto add = [](const char *row, const QString &path, const QString &shown) {
        QTest::newRow(row) << path << text("Error: %1 is not executable").arg(shown);
    };
    for (const auto *package : {"/tmp/Some.app", "/tmp/Some.prefPane"}) {
        QDir().mkpath(text(package) + text("/Contents/MacOS"));
        makeExecutable(text(package) + text("/Contents/MacOS/Some"), "#!/bin/sh\n");
        add(package, text(package), text(package));
    }
    write(text("/tmp/plain"), "#!/bin/sh\n");
    for (const auto *path : {"/missing", "/tmp", "/tmp/plain", "/tmp/true"}) {
        add(path, text(path), text(path));
    }
    add("no path", QString(), text("(null)"));
}

QString fileThatIsNoProgram()
{
    auto path = text("/tmp/no-program");
    makeExecutable(path, "\x7F"
                         "not a program");
    return path;
}

std::shared_ptr<platform::ChildProcess> launched(const ZQTaskEx::Task &task)
{
    for (;;) {
        if (auto process = task.get(); process != nullptr && process->isRunning()) {
            return process;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

} // namespace test
