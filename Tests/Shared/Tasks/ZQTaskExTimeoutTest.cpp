// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Tests/Shared/Tasks/TaskFixture.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <limits>
#include <thread>

using namespace std::chrono_literals;
using test::text;

class ZQTaskExTimeoutTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void aCommandThatEndsInTimeGivesItsResult();
    void aTimedOutRunIsTerminatedAndReported();
    void aTimedOutTerminationCodeIsTheSignal();
    void aTimedOutCommandGivesTheDataThatWasRead();
    void aTimedOutCommandGivesTheTextThatWasRead();
    void halfASecondIsAZeroSecondTimer();
    void halfASecondOnTheMainThreadFiresAsSoonAsItDispatchesEvents();
    void timesAreCutToWholeSeconds();
    void timesThatAreNoneCountAsZero_data();
    void timesThatAreNoneCountAsZero();
    void readingOnTheMainThreadCannotBeInterrupted();
    void theMessageShowsThePathThatWasAskedFor();

    void theTimerOutlivesTheCallAndKeepsItsInstance();
    void aTimerThatWakesLateHarmsNoLaterRun();
    void aTimerWaitsForTheMainThread();
    void anInstanceRunsCommandsToo();
    void theCommandIsClearedWhenTheRunIsOver();
    void refusedPathsAreReportedAsWithoutATimeout();
    void anExceptionPassesThroughTheTimedTerminationCode();
    void manyTimedRunsAtOnceDisturbNobody();
};

namespace {

// How long the threads of this process have asked to sleep that sleep just now.
QList<double> sleeps()
{
    QList<double> times;
    for (const auto &thread :
         QDir(text("/proc/self/task")).entryList(QDir::NoDotAndDotDot | QDir::Dirs)) {
        // "230 0x0 0x0 0x7f... 0x7f... ...": the number of the call and its arguments.
        const auto call = test::contents(text("/proc/self/task/%1/syscall").arg(thread)).split(' ');
        timespec time{};
        if (call.size() > 3 && call[0].toInt() == SYS_clock_nanosleep) {
            iovec here{&time, sizeof time};
            iovec there{reinterpret_cast<void *>(call[3].toULongLong(nullptr, 16)), sizeof time};
            ::process_vm_readv(::getpid(), &here, 1, &there, 1, 0);
            times << static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
        }
    }
    return times;
}

QStringList timedOutLog(const char *path)
{
    return {text("Task %1 timed out. Terminating...").arg(text(path))};
}

const QStringList timedOutConsole{text("Task timed out. Terminating...")};

} // namespace

void ZQTaskExTimeoutTest::init()
{
    test::startTaskLog();
}

void ZQTaskExTimeoutTest::cleanup()
{
    QVERIFY(test::losesItsChildren());
}

void ZQTaskExTimeoutTest::aCommandThatEndsInTimeGivesItsResult()
{
    test::TaskReports reports([&] {
        ZQTaskEx::runTask(text("/usr/bin/touch"), {text("/tmp/touched")}, 1s);
        QVERIFY(QFile::remove(text("/tmp/touched")));
        QCOMPARE(ZQTaskEx::dataFromTask(text("/bin/echo"), {text("a")}, 1s), QByteArray("a\n"));
        QCOMPARE(ZQTaskEx::stringFromTask(text("/bin/echo"), {text("a")}, 1s), text("a\n"));
        const QStringList script{text("-c"), text("exit 3")};
        QCOMPARE(ZQTaskEx::terminationCodeFromTask(text("/bin/sh"), script, 1s), 3);
        QTest::qWait(1500); // until the timers have gone off
    });
    QCOMPARE(reports.logged(), QStringList());
    QCOMPARE(reports.console(), QStringList());
    QCOMPARE(reports.printed(), QStringList());
}

void ZQTaskExTimeoutTest::aTimedOutRunIsTerminatedAndReported()
{
    QElapsedTimer timer;
    timer.start();
    test::TaskReports reports(
        [&] { ZQTaskEx::runTask(text("/bin/sleep"), {text("infinity")}, 1s); });
    QVERIFY(timer.elapsed() >= 1000);
    QCOMPARE(reports.console(), timedOutConsole);
    QCOMPARE(reports.logged(), timedOutLog("/bin/sleep"));
    QCOMPARE(reports.printed(), QStringList());
}

void ZQTaskExTimeoutTest::aTimedOutTerminationCodeIsTheSignal()
{
    QCOMPARE(ZQTaskEx::terminationCodeFromTask(text("/bin/sleep"), {text("60")}, 1s), SIGTERM);
    const auto onWorker = test::onWorker(
        [] { return ZQTaskEx::terminationCodeFromTask(text("/bin/sleep"), {text("60")}, 1s); });
    QCOMPARE(onWorker, SIGTERM);
    QCOMPARE(test::taskLog(), timedOutLog("/bin/sleep") + timedOutLog("/bin/sleep"));
}

void ZQTaskExTimeoutTest::aTimedOutCommandGivesTheDataThatWasRead()
{
    const QStringList script{text("-c"), text("echo output; exec sleep 60")};
    const auto data =
        test::onWorker([&] { return ZQTaskEx::dataFromTask(text("/bin/sh"), script, 1s); });
    QCOMPARE(data, QByteArray("output\n"));
    QCOMPARE(test::taskLog(), timedOutLog("/bin/sh"));
    const auto none = test::onWorker(
        [&] { return ZQTaskEx::dataFromTask(text("/bin/sleep"), {text("60")}, 1s); });
    QVERIFY(none.isEmpty());
    QVERIFY(!none.isNull());
}

void ZQTaskExTimeoutTest::aTimedOutCommandGivesTheTextThatWasRead()
{
    const QStringList script{text("-c"), text("echo é; exec sleep 60")};
    const auto result = test::onWorker([&] {
        return ZQTaskEx::stringFromTask(text("/bin/sh"), script, ZQTaskEx::Encoding::UTF8, 1s);
    });
    QCOMPARE(result, text("é\n"));
}

void ZQTaskExTimeoutTest::halfASecondIsAZeroSecondTimer()
{
    // The main thread serves nothing until the command runs; then the timer, long due, ends it.
    const QStringList script{text("-c"), text("echo > /tmp/half; exec sleep 60")};
    QByteArray data("not yet");
    std::atomic<bool> done = false;
    std::thread worker([&] {
        data = ZQTaskEx::dataFromTask(text("/bin/sh"), script, 0.5s);
        done = true;
    });
    const bool began = test::appears(text("/tmp/half"));
    const auto asleep = sleeps();
    platform::pumpEventsUntil([&] { return done.load(); });
    worker.join();
    QVERIFY(began);
    QCOMPARE(asleep, QList<double>());
    QCOMPARE(data, QByteArray(""));
    QCOMPARE(test::taskLog(), timedOutLog("/bin/sh"));
    QVERIFY(QFile::remove(text("/tmp/half")));
}

void ZQTaskExTimeoutTest::halfASecondOnTheMainThreadFiresAsSoonAsItDispatchesEvents()
{
    QCOMPARE(ZQTaskEx::terminationCodeFromTask(text("/bin/sleep"), {text("60")}, 0.5s), SIGTERM);
    QCOMPARE(test::taskLog(), timedOutLog("/bin/sleep"));
}

void ZQTaskExTimeoutTest::timesAreCutToWholeSeconds()
{
    std::atomic<bool> done = false;
    std::thread worker([&] {
        ZQTaskEx::runTask(text("/bin/sleep"), {text("60")}, 2.9s);
        done = true;
    });
    QTRY_VERIFY(sleeps().contains(2.0));
    QVERIFY(!sleeps().contains(2.9));
    platform::pumpEventsUntil([&] { return done.load(); });
    worker.join();
    QCOMPARE(test::taskLog(), timedOutLog("/bin/sleep"));
}

void ZQTaskExTimeoutTest::timesThatAreNoneCountAsZero_data()
{
    QTest::addColumn<double>("seconds");
    QTest::newRow("zero") << 0.0;
    QTest::newRow("negative") << -5.0;
    QTest::newRow("almost one") << 0.999;
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("minus infinity") << -std::numeric_limits<double>::infinity();
}

void ZQTaskExTimeoutTest::timesThatAreNoneCountAsZero()
{
    QFETCH(double, seconds);
    const ZQTaskEx::Timeout time(seconds);
    QCOMPARE(ZQTaskEx::terminationCodeFromTask(text("/bin/sleep"), {text("60")}, time), SIGTERM);
}

void ZQTaskExTimeoutTest::readingOnTheMainThreadCannotBeInterrupted()
{
    const QStringList script{text("-c"), text("sleep 0.5; echo output")};
    QCOMPARE(ZQTaskEx::dataFromTask(text("/bin/sh"), script, 0s), QByteArray("output\n"));
    QTest::qWait(50);
    QCOMPARE(test::taskLog(), QStringList());
}

void ZQTaskExTimeoutTest::theMessageShowsThePathThatWasAskedFor()
{
    QVERIFY(!QFile::exists(text("/usr/sbin/sleep")));
    ZQTaskEx::runTask(text("/usr/sbin/sleep"), {text("60")}, 0s);
    QCOMPARE(test::taskLog(), timedOutLog("/usr/sbin/sleep"));
}

void ZQTaskExTimeoutTest::theTimerOutlivesTheCallAndKeepsItsInstance()
{
    const auto threads = test::threads();
    auto instance = ZQTaskEx::create();
    const std::weak_ptr<ZQTaskEx> watch = instance;
    instance->runTaskInInstance(text("/bin/true"), {}, 1s);
    instance.reset();
    QVERIFY(!watch.expired());
    QVERIFY(test::threads() > threads);
    QTRY_VERIFY_WITH_TIMEOUT(watch.expired(), 30000);
    QTRY_VERIFY_WITH_TIMEOUT(test::threads() == threads, 30000);
    QCOMPARE(test::taskLog(), QStringList());
}

void ZQTaskExTimeoutTest::aTimerThatWakesLateHarmsNoLaterRun()
{
    // The static form has an instance for each run; the next one is nothing to an old timer.
    ZQTaskEx::runTask(text("/bin/true"), {}, 1s);
    const QStringList script{text("-c"), text("sleep 1.5; exit 5")};
    QCOMPARE(ZQTaskEx::terminationCodeFromTask(text("/bin/sh"), script, 60s), 5);
    QCOMPARE(test::taskLog(), QStringList());
}

void ZQTaskExTimeoutTest::aTimerWaitsForTheMainThread()
{
    // Nothing is terminated for as long as the main thread does not serve the timer.
    std::atomic<bool> done = false;
    qint64 code = 0;
    std::thread worker([&] {
        const QStringList script{text("-c"), text("echo > /tmp/waits; sleep 0.7; exit 6")};
        code = ZQTaskEx::terminationCodeFromTask(text("/bin/sh"), script, 0s);
        done = true;
    });
    while (!done) {
        std::this_thread::sleep_for(1ms);
    }
    worker.join();
    QCOMPARE(code, 6);
    QTest::qWait(50);
    QCOMPARE(test::taskLog(), QStringList());
}

void ZQTaskExTimeoutTest::anInstanceRunsCommandsToo()
{
    const auto instance = ZQTaskEx::create();
    instance->runTaskInInstance(text("/usr/bin/touch"), {text("/tmp/touched")}, 10s);
    QVERIFY(QFile::remove(text("/tmp/touched")));
    QCOMPARE(instance->dataFromTaskInInstance(text("/bin/echo"), {text("a")}, 10s),
             QByteArray("a\n"));
    const QStringList script{text("-c"), text("exit 4")};
    QCOMPARE(instance->terminationCodeFromTaskInInstance(text("/bin/sh"), script, 10s), 4);
}

void ZQTaskExTimeoutTest::theCommandIsClearedWhenTheRunIsOver()
{
    const auto instance = ZQTaskEx::create();
    QVERIFY(instance->theTask() == nullptr);
    std::shared_ptr<platform::ChildProcess> during;
    QTimer::singleShot(0, this, [&] { during = instance->theTask(); });
    instance->runTaskInInstance(text("/bin/sleep"), {text("0.2")}, 10s);
    QVERIFY(during != nullptr);
    QCOMPARE(during->launchPath(), text("/bin/sleep"));
    QVERIFY(instance->theTask() == nullptr);
}

void ZQTaskExTimeoutTest::refusedPathsAreReportedAsWithoutATimeout()
{
    const QStringList message(text("Error: /missing is not executable"));
    test::TaskReports run([] { ZQTaskEx::runTask(text("/missing"), {}, 0s); });
    QCOMPARE(run.printed(), message);
    QCOMPARE(run.logged(), message);
    test::startTaskLog();
    test::TaskReports data(
        [] { QVERIFY(ZQTaskEx::dataFromTask(text("/missing"), {}, 0s).isNull()); });
    QCOMPARE(data.printed(), message);
    QCOMPARE(data.logged(), message);
    test::startTaskLog();
    test::TaskReports code(
        [] { QCOMPARE(ZQTaskEx::terminationCodeFromTask(text("/missing"), {}, 0s), -1); });
    QCOMPARE(code.console(), message);
    QCOMPARE(code.logged(), message);
}

void ZQTaskExTimeoutTest::anExceptionPassesThroughTheTimedTerminationCode()
{
    QVERIFY_EXCEPTION_THROWN(ZQTaskEx::terminationCodeFromTask(test::fileThatIsNoProgram(), {}, 1s),
                             platform::Exception);
    QTest::qWait(1500);
    QCOMPARE(test::taskLog(), QStringList());
}

void ZQTaskExTimeoutTest::manyTimedRunsAtOnceDisturbNobody()
{
    const auto threads = test::threads();
    std::atomic<int> running = 8;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> workers;
    for (int i = 0; i < 8; ++i) {
        workers.emplace_back([&, i] {
            for (int round = 0; round < 10; ++round) {
                const auto word = QByteArray::number(100 * i + round) + '\n';
                const QStringList arguments{QString::fromLatin1(word.trimmed())};
                wrong += ZQTaskEx::dataFromTask(text("/bin/echo"), arguments, 30s) != word;
                const auto code =
                    ZQTaskEx::terminationCodeFromTask(text("/bin/sleep"), {text("60")}, 1s);
                wrong += code != SIGTERM;
                round += 4; // each of these takes a second
            }
            --running;
        });
    }
    platform::pumpEventsUntil([&] { return running == 0; });
    for (auto &worker : workers) {
        worker.join();
    }
    QCOMPARE(wrong.load(), 0);
    // The timers of 30 seconds sleep on, one for each.
    QCOMPARE(test::threads(), threads + 16);
}

TEST_CLASS(ZQTaskExTimeoutTest, QCoreApplication)
#include "ZQTaskExTimeoutTest.moc"
