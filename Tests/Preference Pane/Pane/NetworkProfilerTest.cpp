// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Pane/Ostrel_Preference_Pane.h"
#include "Tests/Support/CommandRecorder.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

using test::CommandRecorder;

namespace {

const QString path = QStringLiteral("/usr/sbin/system_profiler");
const QString noData = QStringLiteral("Unable to get system profile data");
const QString errorOne = QStringLiteral("Error 1 - Invalid system profile data");

} // namespace

// How the pane gets on with the command that lists the interfaces.
class NetworkProfilerTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aProfilerThatMayNotBeRunIsReplacedByOurOwn();
    void aProfilerThatOnlyFailsYieldsNothing();
    void aProfilerThatNeverAnswersIsTerminatedAfterTenSeconds();
    void aProfilerThatCannotBeTerminatedIsNotWaitedForForever();
    void theRealProfilerIsUnderstood();
};

void NetworkProfilerTest::aProfilerThatMayNotBeRunIsReplacedByOurOwn()
{
    const CommandRecorder profiler(path);
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
    test::ConsoleCapture console;
    QCOMPARE(Ostrel_Preference_Pane::networkInterfaces(), std::optional(QVariantList()));
    QCOMPARE(console.lines(), QStringList());
}

void NetworkProfilerTest::aProfilerThatOnlyFailsYieldsNothing()
{
    const CommandRecorder profiler(path, QStringLiteral("echo no permission >&2; exit 1"));
    test::ConsoleCapture console;
    QVERIFY(!Ostrel_Preference_Pane::networkInterfaces());
    QCOMPARE(console.lines(), QStringList{errorOne}); // the task runner hands over what it said
    const CommandRecorder silent(path, QStringLiteral("exit 1"));
    QVERIFY(!Ostrel_Preference_Pane::networkInterfaces());
    QCOMPARE(console.lines(), (QStringList{errorOne, noData}));
}

void NetworkProfilerTest::aProfilerThatNeverAnswersIsTerminatedAfterTenSeconds()
{
    const CommandRecorder profiler(path, QStringLiteral("exec /opt/bin/sleep infinity"));
    test::ConsoleCapture console;
    QElapsedTimer time;
    time.start();
    QVERIFY(!Ostrel_Preference_Pane::networkInterfaces());
    QVERIFY2(time.elapsed() >= 9900, qPrintable(QString::number(time.elapsed())));
    QCOMPARE(console.lines(),
             (QStringList{QStringLiteral("Task timed out. Terminating..."), noData}));
}

void NetworkProfilerTest::aProfilerThatCannotBeTerminatedIsNotWaitedForForever()
{
    const CommandRecorder profiler(path,
                                   QStringLiteral("trap '' TERM; exec /opt/bin/sleep infinity"));
    test::ConsoleCapture console;
    QVERIFY(!Ostrel_Preference_Pane::networkInterfaces());
    QCOMPARE(console.lines().last(), noData);
}

void NetworkProfilerTest::theRealProfilerIsUnderstood()
{
    test::ConsoleCapture console;
    // The sandbox has the loopback only, which is not offered.
    QCOMPARE(Ostrel_Preference_Pane::networkInterfaces(), std::optional(QVariantList()));
    QCOMPARE(console.lines(), QStringList());
}

TEST_CLASS(NetworkProfilerTest, QApplication)
#include "NetworkProfilerTest.moc"
