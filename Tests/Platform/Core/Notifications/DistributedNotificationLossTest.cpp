// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Notifications/DistributedNotificationCenter.h"
#include "Tests/Support/Command.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QTest>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

namespace {

const platform::Notification &notification()
{
    static const platform::Notification status{
        QStringLiteral("ZQOstrelClientCurrentStatus"), {}, {}};
    return status;
}

// Observes and posts, then, when a line has come in and the bus is gone, posts again from threads.
void observeAndPost()
{
    const platform::DistributedObserver observer(notification().name, [](const auto &) {});
    platform::postDistributedNotification(notification());
    std::puts("posted");
    std::fflush(stdout);
    std::getchar();
    while (QDBusConnection::sessionBus().isConnected()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    constexpr int threadCount = 4;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int number = 0; number < threadCount; ++number) {
        threads.emplace_back([] { platform::postDistributedNotification(notification()); });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    QCoreApplication::processEvents();
}

} // namespace

// The bus of a process is fixed with its first use, so each case is a process of its own.
class DistributedNotificationLossTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void withoutASessionBusOneConsoleLineSaysSo();
    void whenTheSessionBusEndsOneConsoleLineSaysSo();

private:
    static void finish(test::Command &program);
};

void DistributedNotificationLossTest::finish(test::Command &program)
{
    program.write("go on\n");
    QTRY_COMPARE_WITH_TIMEOUT(program.state(), QProcess::NotRunning, 60000);
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
}

void DistributedNotificationLossTest::withoutASessionBusOneConsoleLineSaysSo()
{
    test::ConsoleCapture console;
    const test::EnvironmentVariable bus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/tmp/no-such-bus");
    test::Command program(
        QCoreApplication::applicationFilePath(),
        {QStringLiteral("DistributedNotificationLossTest"), QStringLiteral("child")});
    QVERIFY(program.waitForOutput(QStringLiteral("posted")));
    finish(program);
    const auto lines = console.lines();
    QCOMPARE(lines.size(), 1);
    const auto start = QStringLiteral("Distributed notifications are lost: no session bus (");
    QVERIFY2(lines.first().startsWith(start), qPrintable(lines.first()));
    QVERIFY2(lines.first().contains(QStringLiteral("/tmp/no-such-bus")), qPrintable(lines.first()));
}

void DistributedNotificationLossTest::whenTheSessionBusEndsOneConsoleLineSaysSo()
{
    test::ConsoleCapture console;
    test::Command daemon(QStringLiteral("dbus-daemon"),
                         {QStringLiteral("--session"), QStringLiteral("--nofork"),
                          QStringLiteral("--print-address")});
    QVERIFY(daemon.waitForOutput(QStringLiteral("\n")));
    const test::EnvironmentVariable bus("DBUS_SESSION_BUS_ADDRESS",
                                        daemon.output().trimmed().toLatin1());
    test::Command program(
        QCoreApplication::applicationFilePath(),
        {QStringLiteral("DistributedNotificationLossTest"), QStringLiteral("child")});
    QVERIFY(program.waitForOutput(QStringLiteral("posted")));
    QVERIFY(console.lines().isEmpty());
    daemon.kill();
    QTRY_COMPARE_WITH_TIMEOUT(daemon.state(), QProcess::NotRunning, 60000);
    finish(program);
    QCOMPARE(console.lines().size(), 1);
}

static int run(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 2 && std::strcmp(argv[1], "child") == 0) {
        observeAndPost();
        return 0;
    }
    DistributedNotificationLossTest test;
    return QTest::qExec(&test, argc, argv);
}

TEST_FUNCTION(DistributedNotificationLossTest, run)
#include "DistributedNotificationLossTest.moc"
