// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Tasks/ZQTaskEx.h"

#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Text/FileName.h"
#include "Tests/Shared/Tasks/TaskFixture.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <thread>

using test::text;

class ZQTaskExTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void runTaskIsTrueWhateverTheExitStatus();
    void runTaskWaitsForTheEnd();
    void runTaskOfWhatIsNotExecutableIsLoggedAndPrinted_data();
    void runTaskOfWhatIsNotExecutableIsLoggedAndPrinted();
    void aPathWithAPercentSignIsLoggedAsAFormat();
    void runTaskThatCannotBeLaunchedIsLogged();
    void runTaskSendsBothOutputsToTheNullDevice();
    void runTaskHandsOverTheBeginningOfTheComplaint();
    void runTaskHandsOutTheCommandBeforeItsEnd();
    void runTaskHandsOutTheCommandEvenWhenTheLaunchFails();
    void runTaskOnTheMainThreadDispatchesEvents();
    void argumentsAreAnyBytes();

    void runTaskAndReturnDoesNotWait();
    void runTaskAndReturnOfWhatIsNotExecutableIsToldToConsoleAndLog();
    void runTaskAndReturnThatCannotBeLaunchedIsLogged();
    void runTaskAndReturnSendsBothOutputsToTheNullDevice();

    void theTerminationCodeIsTheExitStatus();
    void theTerminationCodeOfADeathBySignalIsTheSignal();
    void theTerminationCodeOfWhatIsNotExecutableIsMinusOne();
    void theTerminationCodeOfWhatCannotBeLaunchedIsAnException();
    void theTerminationCodeHandsOutTheCommand();

    void aCommandOfTheSystemIsFoundWhereTheSystemHasIt();
    void aMissingFileElsewhereIsNotReplacedByACommandOfTheSystem();
    void aFileWithAPackagesEndingIsRun();
    void aPathIsNotCutAtANullCharacter();
};

void ZQTaskExTest::init()
{
    test::startTaskLog();
}

void ZQTaskExTest::runTaskIsTrueWhateverTheExitStatus()
{
    QVERIFY(ZQTaskEx::runTask(text("/bin/true"), {}));
    QVERIFY(ZQTaskEx::runTask(text("/bin/false"), {}));
    QVERIFY(ZQTaskEx::runTask(text("/bin/sh"), {text("-c"), text("kill -9 $$")}));
    QCOMPARE(test::taskLog(), QStringList());
}

void ZQTaskExTest::runTaskWaitsForTheEnd()
{
    const auto script = text("sleep 0.2; echo > /tmp/ended");
    QVERIFY(ZQTaskEx::runTask(text("/bin/sh"), {text("-c"), script}));
    QVERIFY(QFile::remove(text("/tmp/ended")));
    QVERIFY(test::onWorker([&] {
        return ZQTaskEx::runTask(text("/bin/sh"), {text("-c"), script}) &&
               QFile::remove(text("/tmp/ended"));
    }));
}

void ZQTaskExTest::runTaskOfWhatIsNotExecutableIsLoggedAndPrinted_data()
{
    test::addPathsThatAreNotExecutable();
}

void ZQTaskExTest::runTaskOfWhatIsNotExecutableIsLoggedAndPrinted()
{
    QFETCH(QString, path);
    QFETCH(QString, message);
    test::TaskReports reports([&] { QVERIFY(!ZQTaskEx::runTask(path, {})); });
    QCOMPARE(reports.printed(), QStringList(message));
    QCOMPARE(reports.logged(), QStringList(message));
    QCOMPARE(reports.console(), QStringList());
    ZQTaskEx::Task task;
    QVERIFY(!ZQTaskEx::runTask(path, {}, &task));
    QVERIFY(task.get() == nullptr);
}

void ZQTaskExTest::aPathWithAPercentSignIsLoggedAsAFormat()
{
    test::TaskReports reports([] { ZQTaskEx::runTask(text("/missing/100%%/%@"), {}); });
    QCOMPARE(reports.printed(), QStringList(text("Error: /missing/100%%/%@ is not executable")));
    QCOMPARE(reports.logged(), QStringList(text("Error: /missing/100%/(null) is not executable")));
}

void ZQTaskExTest::runTaskThatCannotBeLaunchedIsLogged()
{
    const auto path = test::fileThatIsNoProgram();
    test::TaskReports reports([&] { QVERIFY(!ZQTaskEx::runTask(path, {})); });
    QCOMPARE(reports.logged(),
             QStringList(text("Exception running task %1: Exec format error").arg(path)));
    QCOMPARE(reports.printed(), QStringList());
    QCOMPARE(reports.console(), QStringList());
}

void ZQTaskExTest::runTaskSendsBothOutputsToTheNullDevice()
{
    const QStringList script{text("-c"), text("streams=$(readlink /proc/$$/fd/[12]); "
                                              "echo \"$streams\" > /tmp/streams; echo output; "
                                              "echo error >&2")};
    test::TaskReports reports([&] { QVERIFY(ZQTaskEx::runTask(text("/bin/sh"), script)); });
    QCOMPARE(reports.printed(), QStringList());
    QCOMPARE(test::contents(text("/tmp/streams")), QByteArray("/dev/null\n/dev/null\n"));
}

void ZQTaskExTest::runTaskHandsOverTheBeginningOfTheComplaint()
{
    QByteArray complaint;
    const auto run = [&](const char *script) {
        return ZQTaskEx::runTask(text("/bin/sh"), {text("-c"), text(script)}, nullptr, &complaint);
    };
    QVERIFY(run("echo output; echo complaint >&2; exit 1"));
    QCOMPARE(complaint, QByteArray("complaint\n"));
    QVERIFY(run("echo output"));
    QCOMPARE(complaint, QByteArray());
    // More than any pipe takes, while nobody reads.
    QVERIFY(run("head -c 5000000 /dev/zero | tr '\\0' x >&2"));
    QCOMPARE(complaint, QByteArray(4096, 'x'));
    // What goes on in the background with it is not waited for.
    QVERIFY(run("echo complaint >&2; sleep 600 & exit 0"));
    QCOMPARE(complaint, QByteArray("complaint\n"));
    ZQTaskEx::runTask(text("/bin/sh"), {text("-c"), text("echo late >&2; exec sleep 600")},
                      ZQTaskEx::Timeout(1), &complaint);
    QCOMPARE(complaint, QByteArray("late\n"));
}

void ZQTaskExTest::runTaskHandsOutTheCommandBeforeItsEnd()
{
    ZQTaskEx::Task task;
    std::thread ending([&] { test::launched(task)->terminate(); });
    QVERIFY(ZQTaskEx::runTask(text("/bin/sleep"), {text("60")}, &task));
    ending.join();
    QCOMPARE(task.get()->terminationStatus(), SIGTERM);
    QCOMPARE(task.get()->launchPath(), text("/bin/sleep"));
}

void ZQTaskExTest::runTaskHandsOutTheCommandEvenWhenTheLaunchFails()
{
    ZQTaskEx::Task task;
    QVERIFY(!ZQTaskEx::runTask(test::fileThatIsNoProgram(), {}, &task));
    QVERIFY(task.get() != nullptr);
    QVERIFY(!task.get()->isRunning());
}

void ZQTaskExTest::runTaskOnTheMainThreadDispatchesEvents()
{
    ZQTaskEx::Task task;
    QTimer::singleShot(0, [&] { task.get()->terminate(); });
    QVERIFY(ZQTaskEx::runTask(text("/bin/sleep"), {text("60")}, &task));
    QCOMPARE(task.get()->terminationStatus(), SIGTERM);
}

void ZQTaskExTest::argumentsAreAnyBytes()
{
    const QList<QByteArray> names{"-f", "line\nbreak", "\"'`$(x)", "100%s %@ %n", "\xFF\xFE", " "};
    QStringList arguments{text("--")};
    for (const auto &name : names) {
        arguments << platform::fileNameFromBytes("/tmp/any/" + name);
    }
    QVERIFY(QDir().mkpath(text("/tmp/any")));
    QVERIFY(ZQTaskEx::runTask(text("/usr/bin/touch"), arguments));
    for (const auto &name : names) {
        QCOMPARE(::access(("/tmp/any/" + name).constData(), F_OK), 0);
    }
    QCOMPARE(ZQTaskEx::terminationCodeFromTask(text("/bin/rm"), arguments), 0);
    QVERIFY(QDir().rmdir(text("/tmp/any")));
}

void ZQTaskExTest::runTaskAndReturnDoesNotWait()
{
    const QStringList script{text("-c"), text("echo $$ > /tmp/runs; exec sleep infinity")};
    ZQTaskEx::runTaskAndReturn(text("/bin/sh"), script);
    QTRY_VERIFY(test::contents(text("/tmp/runs")).endsWith('\n'));
    ::kill(test::contents(text("/tmp/runs")).trimmed().toInt(), SIGTERM);
    QVERIFY(test::losesItsChildren());
}

void ZQTaskExTest::runTaskAndReturnOfWhatIsNotExecutableIsToldToConsoleAndLog()
{
    for (const auto &path : {text("/missing"), text("/tmp"), QString()}) {
        const auto message =
            text("Error: %1 is not executable").arg(path.isNull() ? text("(null)") : path);
        test::startTaskLog();
        test::TaskReports reports([&] { ZQTaskEx::runTaskAndReturn(path, {}); });
        QCOMPARE(reports.console(), QStringList(message));
        QCOMPARE(reports.logged(), QStringList(message));
        QCOMPARE(reports.printed(), QStringList());
    }
}

void ZQTaskExTest::runTaskAndReturnThatCannotBeLaunchedIsLogged()
{
    const auto path = test::fileThatIsNoProgram();
    test::TaskReports reports([&] { ZQTaskEx::runTaskAndReturn(path, {}); });
    QCOMPARE(reports.logged(),
             QStringList(text("Exception running task %1: Exec format error").arg(path)));
}

void ZQTaskExTest::runTaskAndReturnSendsBothOutputsToTheNullDevice()
{
    const QStringList script{text("-c"), text("streams=$(readlink /proc/$$/fd/[12]); "
                                              "echo \"$streams\" > /tmp/part; "
                                              "mv /tmp/part /tmp/returned")};
    ZQTaskEx::runTaskAndReturn(text("/bin/sh"), script);
    QVERIFY(test::appears(text("/tmp/returned")));
    QCOMPARE(test::contents(text("/tmp/returned")), QByteArray("/dev/null\n/dev/null\n"));
}

void ZQTaskExTest::theTerminationCodeIsTheExitStatus()
{
    for (const auto *status : {"0", "1", "7", "255"}) {
        const QStringList script{text("-c"),
                                 text("echo out; echo err >&2; exit %1").arg(text(status))};
        test::TaskReports reports([&] {
            QCOMPARE(ZQTaskEx::terminationCodeFromTask(text("/bin/sh"), script),
                     text(status).toLongLong());
        });
        QCOMPARE(reports.printed(), QStringList());
    }
}

void ZQTaskExTest::theTerminationCodeOfADeathBySignalIsTheSignal()
{
    const QStringList script{text("-c"), text("kill -KILL $$")};
    QCOMPARE(ZQTaskEx::terminationCodeFromTask(text("/bin/sh"), script), SIGKILL);
}

void ZQTaskExTest::theTerminationCodeOfWhatIsNotExecutableIsMinusOne()
{
    QVERIFY(QDir().mkpath(text("/tmp/Some.app")));
    for (const auto &path : {text("/missing"), text("/tmp/Some.app"), QString()}) {
        const auto message =
            text("Error: %1 is not executable").arg(path.isNull() ? text("(null)") : path);
        test::startTaskLog();
        test::TaskReports reports(
            [&] { QCOMPARE(ZQTaskEx::terminationCodeFromTask(path, {}), -1); });
        QCOMPARE(reports.console(), QStringList(message));
        QCOMPARE(reports.logged(), QStringList(message));
        QCOMPARE(reports.printed(), QStringList());
    }
}

void ZQTaskExTest::theTerminationCodeOfWhatCannotBeLaunchedIsAnException()
{
    QVERIFY_EXCEPTION_THROWN(ZQTaskEx::terminationCodeFromTask(test::fileThatIsNoProgram(), {}),
                             platform::Exception);
    QCOMPARE(test::taskLog(), QStringList());
}

void ZQTaskExTest::theTerminationCodeHandsOutTheCommand()
{
    ZQTaskEx::Task task;
    std::thread ending([&] { test::launched(task)->terminate(); });
    QCOMPARE(ZQTaskEx::terminationCodeFromTask(text("/bin/sleep"), {text("60")}, &task), SIGTERM);
    ending.join();
    QVERIFY(!task.get()->isRunning());
}

void ZQTaskExTest::aCommandOfTheSystemIsFoundWhereTheSystemHasIt()
{
    QVERIFY(!QFile::exists(text("/usr/sbin/touch")));
    QVERIFY(ZQTaskEx::runTask(text("/usr/sbin/touch"), {text("/tmp/touched")}));
    QVERIFY(QFile::exists(text("/tmp/touched")));
    ZQTaskEx::Task task;
    QCOMPARE(ZQTaskEx::dataFromTask(text("/usr/sbin/echo"), {text("x")}, &task), QByteArray("x\n"));
    QCOMPARE(task.get()->launchPath(), text("/usr/sbin/echo"));
}

void ZQTaskExTest::aMissingFileElsewhereIsNotReplacedByACommandOfTheSystem()
{
    for (const auto *path : {"/tmp/true", "/Library/true", "true", "/true", "/bin/missing/true"}) {
        QCOMPARE(ZQTaskEx::terminationCodeFromTask(text(path), {}), -1);
    }
}

void ZQTaskExTest::aFileWithAPackagesEndingIsRun()
{
    test::makeExecutable(text("/tmp/file.app"), "#!/bin/sh\nexit 11\n");
    QCOMPARE(ZQTaskEx::terminationCodeFromTask(text("/tmp/file.app"), {}), 11);
}

void ZQTaskExTest::aPathIsNotCutAtANullCharacter()
{
    const QString path = text("/bin/true") + QChar(0);
    QVERIFY(!ZQTaskEx::runTask(path, {}));
    QVERIFY(ZQTaskEx::dataFromTask(path, {}, nullptr).isNull());
    QCOMPARE(ZQTaskEx::terminationCodeFromTask(path, {}), -1);
}

TEST_CLASS(ZQTaskExTest, QCoreApplication)
#include "ZQTaskExTest.moc"
