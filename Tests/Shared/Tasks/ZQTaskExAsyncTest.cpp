// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/PlatformException.h"
#include "Tests/Shared/Tasks/TaskFixture.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QTest>
#include <QTimer>

#include <condition_variable>
#include <csignal>
#include <thread>

using test::text;

class ZQTaskExAsyncTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void theCallbackGetsEveryPieceAndThenEmptyData();
    void theCallbackGetsTheRunnerAndTheObject();
    void withoutAnObjectTheCallbackGetsNone();
    void theCallReturnsAtOnceAndTheCallbackIsOnAnotherThread();
    void outputIsAnyBytesAndAnySize();
    void standardErrorGoesToTheNullDevice();
    void anEnvironmentReplacesTheInheritedOne();
    void theReaderKeepsTheRunnerAlive();
    void theCallbackAndTheObjectAreReleasedAtTheEnd();
    void theCommandIsClearedAtTheEnd();
    void withoutACallbackTheCommandRunsAllTheSame();
    void aCommandThatClosesItsOutputIsTerminated();

    void withoutACommandLaunchingIsRefused();
    void whatDoesNotExistOrIsNotExecutableIsLogged();
    void aPackageIsNotRefusedButLaunched();
    void whatCannotBeLaunchedIsLoggedAsAnException();
    void anExceptionOfTheCallbackIsLogged_data();
    void anExceptionOfTheCallbackIsLogged();

    void terminatingFromOutsideEndsTheCommandAndTheCalls();
    void terminatingEndsTheReaderOfACommandThatDoesNotEnd();
    void terminatingRightAfterTheStartLeavesNothingBehind();
    void terminatingInTheCallbackEndsTheCalls();
    void terminatingWithoutACommandDoesNothing();
    void theCallbackMayStartTheNextCommand();
    void aNewCommandSilencesTheOldOne();
    void aTimedRunIsTerminatedToo();
};

namespace {

// What a callback was told; the test's own thread looks at it.
class Calls {
public:
    ZQTaskEx::Callback callback()
    {
        return [this](const QByteArray &data, ZQTaskEx &runner, const QVariant &object) {
            const std::lock_guard lock(m_mutex);
            m_pieces << data;
            m_runner = &runner;
            m_object = object;
            m_isOnOwnThread = std::this_thread::get_id() != m_thread;
            m_changed.notify_all();
        };
    }

    bool waitForPieces(int count)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(30),
                                  [&] { return m_pieces.size() >= count; });
    }
    bool waitForEnd()
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(30),
                                  [&] { return !m_pieces.isEmpty() && m_pieces.last().isEmpty(); });
    }

    QList<QByteArray> pieces()
    {
        const std::lock_guard lock(m_mutex);
        return m_pieces;
    }
    QByteArray all() { return pieces().join(); }
    const ZQTaskEx *runner() const { return m_runner; }
    const QVariant &object() const { return m_object; }
    bool isOnOwnThread() const { return m_isOnOwnThread; }

private:
    const std::thread::id m_thread = std::this_thread::get_id();
    std::mutex m_mutex;
    std::condition_variable m_changed;
    QList<QByteArray> m_pieces;
    const ZQTaskEx *m_runner = nullptr;
    QVariant m_object;
    bool m_isOnOwnThread = false;
};

void start(ZQTaskEx &runner, const char *script, const ZQTaskEx::Callback &callback,
           const QVariant &object = {})
{
    runner.asyncDataFromTask(text("/bin/sh"), {text("-c"), text(script)}, callback, object);
}

} // namespace

void ZQTaskExAsyncTest::init()
{
    test::startTaskLog();
}

void ZQTaskExAsyncTest::cleanup()
{
    QVERIFY(test::losesItsChildren());
}

void ZQTaskExAsyncTest::theCallbackGetsEveryPieceAndThenEmptyData()
{
    Calls calls;
    const auto runner = ZQTaskEx::create();
    start(*runner, "echo one; while ! test -e /tmp/go; do sleep 0.01; done; echo two",
          calls.callback());
    QVERIFY(calls.waitForPieces(1));
    QCOMPARE(calls.pieces(), QList<QByteArray>{"one\n"});
    test::write(text("/tmp/go"), "");
    QVERIFY(calls.waitForEnd());
    QCOMPARE(calls.pieces(), (QList<QByteArray>{"one\n", "two\n", ""}));
    QVERIFY(!calls.pieces().last().isNull());
    QCOMPARE(test::taskLog(), QStringList());
}

void ZQTaskExAsyncTest::theCallbackGetsTheRunnerAndTheObject()
{
    Calls calls;
    const auto runner = ZQTaskEx::create();
    start(*runner, "echo one", calls.callback(), text("object"));
    QVERIFY(calls.waitForPieces(1));
    QVERIFY(calls.waitForEnd());
    QCOMPARE(calls.runner(), runner.get());
    QCOMPARE(calls.object(), QVariant(text("object")));
}

void ZQTaskExAsyncTest::withoutAnObjectTheCallbackGetsNone()
{
    Calls calls;
    const auto runner = ZQTaskEx::create();
    start(*runner, "echo one", calls.callback());
    QVERIFY(calls.waitForEnd());
    QVERIFY(!calls.object().isValid());
}

void ZQTaskExAsyncTest::theCallReturnsAtOnceAndTheCallbackIsOnAnotherThread()
{
    Calls calls;
    const auto runner = ZQTaskEx::create();
    start(*runner, "while ! test -e /tmp/later; do sleep 0.01; done", calls.callback());
    test::write(text("/tmp/later"), ""); // would never happen if the call waited
    QVERIFY(calls.waitForEnd());
    QVERIFY(calls.isOnOwnThread());
}

void ZQTaskExAsyncTest::outputIsAnyBytesAndAnySize()
{
    Calls calls;
    const auto runner = ZQTaskEx::create();
    start(*runner, "printf '\\0\\377%%@'; head -c 20000000 /dev/zero", calls.callback());
    QVERIFY(calls.waitForEnd());
    QVERIFY(calls.all() == QByteArray("\0\xFF%@", 4) + QByteArray(20000000, '\0'));
    QCOMPARE(calls.pieces().count(QByteArray("")), 1);
}

void ZQTaskExAsyncTest::standardErrorGoesToTheNullDevice()
{
    Calls calls;
    const auto runner = ZQTaskEx::create();
    start(*runner, "echo error >&2; readlink /proc/$$/fd/2", calls.callback());
    QVERIFY(calls.waitForEnd());
    QCOMPARE(calls.all(), QByteArray("/dev/null\n"));
}

void ZQTaskExAsyncTest::anEnvironmentReplacesTheInheritedOne()
{
    const test::EnvironmentVariable variable("OSTREL_TEST", "inherited");
    const QStringList arguments{text("OSTREL_TEST"), text("OTHER")};
    const auto runner = ZQTaskEx::create();
    Calls inherited;
    runner->asyncDataFromTask(text("/usr/bin/printenv"), arguments, inherited.callback());
    QVERIFY(inherited.waitForEnd());
    QCOMPARE(inherited.all(), QByteArray("inherited\n"));
    Calls replaced;
    runner->asyncDataFromTask(text("/usr/bin/printenv"), arguments, replaced.callback(), {},
                              ZQTaskEx::Environment{{text("OTHER"), text("new")}});
    QVERIFY(replaced.waitForEnd());
    QCOMPARE(replaced.all(), QByteArray("new\n"));
}

void ZQTaskExAsyncTest::theReaderKeepsTheRunnerAlive()
{
    Calls calls;
    auto runner = ZQTaskEx::create();
    const std::weak_ptr<ZQTaskEx> watch = runner;
    start(*runner, "while ! test -e /tmp/kept; do sleep 0.01; done; echo end", calls.callback());
    runner.reset();
    QVERIFY(!watch.expired());
    test::write(text("/tmp/kept"), "");
    QVERIFY(calls.waitForEnd());
    QCOMPARE(calls.all(), QByteArray("end\n"));
    QTRY_VERIFY(watch.expired());
}

void ZQTaskExAsyncTest::theCallbackAndTheObjectAreReleasedAtTheEnd()
{
    Calls calls;
    auto kept = std::make_shared<int>(1);
    const auto runner = ZQTaskEx::create();
    start(*runner, "echo one",
          [kept, callback = calls.callback()](const QByteArray &data, ZQTaskEx &own,
                                              const QVariant &object) {
              callback(data, own, object);
          });
    QVERIFY(calls.waitForEnd());
    QTRY_COMPARE(kept.use_count(), 1L);
}

void ZQTaskExAsyncTest::theCommandIsClearedAtTheEnd()
{
    Calls calls;
    const auto runner = ZQTaskEx::create();
    start(*runner, "echo one; while ! test -e /tmp/clear; do sleep 0.01; done", calls.callback());
    QVERIFY(calls.waitForPieces(1));
    QVERIFY(runner->theTask() != nullptr);
    QVERIFY(runner->theTask()->isRunning());
    test::write(text("/tmp/clear"), "");
    QTRY_VERIFY(runner->theTask() == nullptr);
}

void ZQTaskExAsyncTest::withoutACallbackTheCommandRunsAllTheSame()
{
    const auto runner = ZQTaskEx::create();
    start(*runner, "echo output; echo > /tmp/silent", nullptr);
    QTRY_VERIFY(QFile::exists(text("/tmp/silent")));
    QTRY_VERIFY(runner->theTask() == nullptr);
}

void ZQTaskExAsyncTest::aCommandThatClosesItsOutputIsTerminated()
{
    Calls calls;
    const auto runner = ZQTaskEx::create();
    start(*runner,
          "while ! test -e /tmp/may-close; do sleep 0.01; done; echo output; exec sleep 60 >&2",
          calls.callback());
    const auto process = runner->theTask();
    QVERIFY(process != nullptr);
    test::write(text("/tmp/may-close"), "");
    QVERIFY(calls.waitForEnd());
    process->waitUntilExit();
    QCOMPARE(process->terminationStatus(), SIGTERM);
}

void ZQTaskExAsyncTest::withoutACommandLaunchingIsRefused()
{
    const auto message = text("Unable to launch async task - no task set");
    test::TaskReports reports([] { ZQTaskEx::create()->launchAsyncTask(); });
    QCOMPARE(reports.logged(), QStringList(message));
    QCOMPARE(reports.printed(), QStringList(message));
}

void ZQTaskExAsyncTest::whatDoesNotExistOrIsNotExecutableIsLogged()
{
    test::write(text("/tmp/plain"), "#!/bin/sh\n");
    const QStringList message{
        text("Unable to launch async task - task does not exist or is not executable")};
    for (const auto &path : {text("/missing"), text("/tmp/plain"), QString(), text("/tmp/true")}) {
        test::startTaskLog();
        Calls calls;
        const auto threads = test::threads();
        test::TaskReports reports([&] {
            ZQTaskEx::create()->asyncDataFromTask(path, {}, calls.callback());
            QTRY_VERIFY(test::threads() <= threads);
        });
        QCOMPARE(reports.logged(), message);
        QCOMPARE(reports.printed(), QStringList());
        QCOMPARE(calls.pieces(), QList<QByteArray>());
    }
}

void ZQTaskExAsyncTest::aPackageIsNotRefusedButLaunched()
{
    QVERIFY(QDir().mkpath(text("/tmp/Some.app")));
    auto runner = ZQTaskEx::create();
    const std::weak_ptr<ZQTaskEx> reader = runner;
    Calls calls;
    runner->asyncDataFromTask(text("/tmp/Some.app"), {}, calls.callback());
    runner.reset();
    QTRY_VERIFY(reader.expired()); // and has printed what it logged
    // Which the system cannot do.
    const QStringList expected{text("Exception in -[ZQTaskEx launchAsyncTask]. "
                                    "NSInvalidArgumentException - Permission denied.")};
    QCOMPARE(test::taskLog(), expected);
    QCOMPARE(calls.pieces(), QList<QByteArray>());
}

void ZQTaskExAsyncTest::whatCannotBeLaunchedIsLoggedAsAnException()
{
    auto runner = ZQTaskEx::create();
    const std::weak_ptr<ZQTaskEx> reader = runner;
    Calls calls;
    const auto message = text("Exception in -[ZQTaskEx launchAsyncTask]. "
                              "NSInvalidArgumentException - Exec format error.");
    test::TaskReports reports([&] {
        runner->asyncDataFromTask(test::fileThatIsNoProgram(), {}, calls.callback());
        runner.reset();
        QTRY_VERIFY(reader.expired()); // the reader's thread keeps it until it ends
    });
    QCOMPARE(reports.logged(), QStringList(message));
    QCOMPARE(reports.printed(), QStringList(message));
    QCOMPARE(calls.pieces(), QList<QByteArray>());
}

void ZQTaskExAsyncTest::anExceptionOfTheCallbackIsLogged_data()
{
    QTest::addColumn<bool>("isPlatforms");
    QTest::addColumn<QString>("shown");
    QTest::newRow("platform") << true << text("Name - Reason");
    QTest::newRow("standard") << false << text("std::exception - Reason");
}

void ZQTaskExAsyncTest::anExceptionOfTheCallbackIsLogged()
{
    QFETCH(bool, isPlatforms);
    QFETCH(QString, shown);
    const auto runner = ZQTaskEx::create();
    start(*runner, "echo output", [=](const QByteArray &, ZQTaskEx &, const QVariant &) {
        if (isPlatforms) {
            throw platform::Exception(text("Name"), text("Reason"));
        }
        throw std::runtime_error("Reason");
    });
    const QStringList expected{text("Exception in -[ZQTaskEx launchAsyncTask]. %1.").arg(shown)};
    QTRY_COMPARE(test::taskLog(), expected);
}

void ZQTaskExAsyncTest::terminatingFromOutsideEndsTheCommandAndTheCalls()
{
    Calls calls;
    auto kept = std::make_shared<int>(1);
    const auto runner = ZQTaskEx::create();
    start(*runner, "while :; do echo output; done",
          [kept, callback = calls.callback()](const QByteArray &data, ZQTaskEx &own,
                                              const QVariant &object) {
              callback(data, own, object);
          });
    const auto process = runner->theTask();
    QVERIFY(calls.waitForPieces(3));
    runner->terminateAsyncTask();
    QVERIFY(runner->theTask() == nullptr);
    process->waitUntilExit();
    // Whichever of the closed pipe and the request was first.
    const auto status = process->terminationStatus();
    QVERIFY2(status == SIGTERM || status == SIGPIPE, QByteArray::number(status).constData());
    QTRY_COMPARE(kept.use_count(), 1L);
    QVERIFY(!calls.pieces().last().isEmpty()); // no end is told to who has been forgotten
}

void ZQTaskExAsyncTest::terminatingEndsTheReaderOfACommandThatDoesNotEnd()
{
    const auto threads = test::threads();
    Calls calls;
    const auto runner = ZQTaskEx::create();
    start(*runner, "trap '' TERM; echo output; while ! test -e /tmp/may-end; do sleep 0.01; done",
          calls.callback());
    QVERIFY(calls.waitForPieces(1));
    const auto process = runner->theTask();
    runner->terminateAsyncTask();
    QTRY_VERIFY(test::threads() <= threads + 1); // the one that will reap the command
    QVERIFY(process->isRunning());
    test::write(text("/tmp/may-end"), "");
    process->waitUntilExit();
    QCOMPARE(process->terminationStatus(), 0);
}

void ZQTaskExAsyncTest::terminatingRightAfterTheStartLeavesNothingBehind()
{
    const auto descriptors = test::openDescriptors();
    for (int round = 0; round < 200; ++round) {
        const auto runner = ZQTaskEx::create();
        runner->asyncDataFromTask(text("/bin/sleep"), {text("60")}, nullptr);
        if (round % 4 == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        runner->terminateAsyncTask();
        QVERIFY(runner->theTask() == nullptr);
    }
    QVERIFY(test::losesItsChildren());
    QTRY_VERIFY(test::openDescriptors() <= descriptors);
}

void ZQTaskExAsyncTest::terminatingInTheCallbackEndsTheCalls()
{
    Calls calls;
    const auto runner = ZQTaskEx::create();
    start(*runner, "while :; do echo output; done",
          [callback = calls.callback()](const QByteArray &data, ZQTaskEx &own,
                                        const QVariant &object) {
              callback(data, own, object);
              own.terminateAsyncTask();
          });
    QTRY_VERIFY(runner->theTask() == nullptr);
    QVERIFY(test::losesItsChildren());
    QCOMPARE(calls.pieces().size(), 1);
}

void ZQTaskExAsyncTest::terminatingWithoutACommandDoesNothing()
{
    const auto runner = ZQTaskEx::create();
    runner->terminateAsyncTask();
    Calls calls;
    start(*runner, "echo output", calls.callback());
    QVERIFY(calls.waitForEnd());
    runner->terminateAsyncTask();
    runner->terminateAsyncTask();
    QCOMPARE(test::taskLog(), QStringList());
}

void ZQTaskExAsyncTest::theCallbackMayStartTheNextCommand()
{
    Calls calls;
    const auto runner = ZQTaskEx::create();
    start(*runner, "echo one", [&calls](const QByteArray &data, ZQTaskEx &own, const QVariant &) {
        if (data.isEmpty()) {
            start(own, "echo two", calls.callback());
        }
    });
    QVERIFY(calls.waitForEnd());
    QCOMPARE(calls.all(), QByteArray("two\n"));
}

void ZQTaskExAsyncTest::aNewCommandSilencesTheOldOne()
{
    Calls first;
    Calls second;
    const auto runner = ZQTaskEx::create();
    start(*runner,
          "echo one; while ! test -e /tmp/silenced; do sleep 0.01; done; echo two; "
          "echo > /tmp/first-ends",
          first.callback());
    QVERIFY(first.waitForPieces(1));
    start(*runner,
          "echo > /tmp/silenced; while ! test -e /tmp/first-ends; do sleep 0.01; done; "
          "sleep 0.1; echo three",
          second.callback());
    QVERIFY(second.waitForEnd());
    QCOMPARE(first.pieces(), QList<QByteArray>{"one\n"});
    QCOMPARE(second.all(), QByteArray("three\n"));
}

void ZQTaskExAsyncTest::aTimedRunIsTerminatedToo()
{
    const auto runner = ZQTaskEx::create();
    QTimer::singleShot(0, this, [&] { runner->terminateAsyncTask(); });
    const auto code = runner->terminationCodeFromTaskInInstance(text("/bin/sleep"), {text("60")},
                                                                std::chrono::seconds(50));
    QCOMPARE(code, SIGTERM);
    QCOMPARE(test::taskLog(), QStringList());
}

TEST_CLASS(ZQTaskExAsyncTest, QCoreApplication)
#include "ZQTaskExAsyncTest.moc"
