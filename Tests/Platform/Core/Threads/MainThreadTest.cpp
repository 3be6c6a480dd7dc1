// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Threads/MainThread.h"

#include "Platform/Core/Threads/WorkerThreads.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>
#include <QTimer>

#include <memory>
#include <thread>

using namespace std::chrono_literals;

class MainThreadTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aCallWithoutWaitRunsOnALaterPassInOrder();
    void aCallQueuedByACallBelongsToALaterPass();
    void whatACallHoldsMayQueueACallAsItGoes();
    void aWaitingCallOnTheMainThreadRunsAtOnce();
    void aWaitingCallFromAWorkerRunsOnTheMainThread();
    void pumpingWaitsAtMostItsTime();
    void pumpingUntilAnEndDispatchesEventsAndReturnsTrue();
    void pumpingUntilAnEndThatIsThereReturnsAtOnce();
    void pumpingUntilAnEndMayBeNested();
    void pumpingUntilAnEndReturnsFalseWhenTheApplicationQuits();
    void endingWorkersServesTheirCallsAndCutsTheirSleep();
    void aWorkerIsToldThatItIsToEnd();
};

void MainThreadTest::aCallWithoutWaitRunsOnALaterPassInOrder()
{
    QList<int> order;
    platform::performOnMainThread([&] { order << 1; });
    platform::performOnMainThread([&] { order << 2; });
    order << 0;
    QTRY_COMPARE(order, (QList<int>{0, 1, 2}));
}

void MainThreadTest::aCallQueuedByACallBelongsToALaterPass()
{
    int runs = 0;
    platform::performOnMainThread([&] { platform::performOnMainThread([&] { ++runs; }); });
    platform::runPendingMainThreadCalls();
    QCOMPARE(runs, 0);
    platform::runPendingMainThreadCalls();
    QCOMPARE(runs, 1);
}

void MainThreadTest::whatACallHoldsMayQueueACallAsItGoes()
{
    bool isCalled = false;
    const auto queue = [&](const int * /*held*/) {
        platform::performOnMainThread([&] { isCalled = true; });
    };
    platform::performOnMainThread([held = std::shared_ptr<const int>(nullptr, queue)] {});
    QTRY_VERIFY(isCalled);
}

void MainThreadTest::aWaitingCallOnTheMainThreadRunsAtOnce()
{
    bool ran = false;
    platform::performOnMainThreadAndWait([&] { ran = true; });
    QVERIFY(ran);
}

void MainThreadTest::aWaitingCallFromAWorkerRunsOnTheMainThread()
{
    std::atomic<bool> onMain = false;
    std::atomic<bool> after = false;
    std::thread worker([&] {
        platform::performOnMainThreadAndWait([&] { onMain = platform::isMainThread(); });
        after = onMain.load();
    });
    QTRY_VERIFY(after.load());
    worker.join();
}

void MainThreadTest::pumpingWaitsAtMostItsTime()
{
    platform::pumpEvents(10ms);
}

void MainThreadTest::pumpingUntilAnEndDispatchesEventsAndReturnsTrue()
{
    bool called = false;
    std::atomic<bool> ended = false;
    platform::performOnMainThread([&] { called = true; });
    std::thread worker([&] {
        std::this_thread::sleep_for(50ms);
        ended = true;
    });
    QVERIFY(platform::pumpEventsUntil([&] { return ended.load(); }));
    worker.join();
    QVERIFY(called);
}

void MainThreadTest::pumpingUntilAnEndThatIsThereReturnsAtOnce()
{
    bool called = false;
    platform::performOnMainThread([&] { called = true; });
    QVERIFY(platform::pumpEventsUntil([] { return true; }));
    QVERIFY(!called);
    platform::runPendingMainThreadCalls();
}

void MainThreadTest::pumpingUntilAnEndMayBeNested()
{
    QStringList order;
    bool outer = false;
    bool inner = false;
    QTimer::singleShot(10ms, this, [&] {
        QTimer::singleShot(20ms, this, [&] { outer = true; });
        QTimer::singleShot(80ms, this, [&] { inner = true; });
        QVERIFY(platform::pumpEventsUntil([&] { return inner; }));
        order << QStringLiteral("inner");
    });
    QVERIFY(platform::pumpEventsUntil([&] { return outer; }));
    order << QStringLiteral("outer");
    QCOMPARE(order, QStringList({QStringLiteral("inner"), QStringLiteral("outer")}));
}

void MainThreadTest::pumpingUntilAnEndReturnsFalseWhenTheApplicationQuits()
{
    bool returned = true;
    QTimer::singleShot(0, this,
                       [&] { returned = platform::pumpEventsUntil([] { return false; }); });
    QTimer::singleShot(50ms, this, [] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    QVERIFY(!returned);
}

void MainThreadTest::endingWorkersServesTheirCallsAndCutsTheirSleep()
{
    std::atomic<bool> sleptWhole = true;
    bool called = false;
    {
        platform::WorkerThreads workers;
        workers.start([&] {
            sleptWhole = workers.sleepFor(1h);
            platform::performOnMainThreadAndWait([&] { called = true; });
        });
    }
    QVERIFY(!sleptWhole);
    QVERIFY(called);
}

void MainThreadTest::aWorkerIsToldThatItIsToEnd()
{
    QVERIFY(!platform::WorkerThreads::currentThreadShouldStop());
    std::atomic<bool> asked = false;
    std::atomic<bool> before = true;
    std::atomic<bool> after = false;
    {
        platform::WorkerThreads workers;
        workers.start([&] {
            before = platform::WorkerThreads::currentThreadShouldStop();
            asked = true;
            workers.sleepFor(60s);
            after = platform::WorkerThreads::currentThreadShouldStop();
        });
        QTRY_VERIFY(asked.load());
    }
    QVERIFY(!before);
    QVERIFY(after);
}

static int run(int count, char **arguments)
{
    // Without an application, too, a worker is not the main thread.
    bool onWorker = true;
    std::thread([&] { onWorker = platform::isMainThread(); }).join();
    if (onWorker || !platform::isMainThread()) {
        qFatal("without an application the main thread is not known");
    }
    QCoreApplication application(count, arguments);
    MainThreadTest test;
    return QTest::qExec(&test, count, arguments);
}

TEST_FUNCTION(MainThreadTest, run)
#include "MainThreadTest.moc"
