// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/MainThread.h"

#include "Platform/WorkerThreads.h"

#include <QElapsedTimer>
#include <QTest>

#include <thread>

using namespace std::chrono_literals;

class MainThreadTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aCallWithoutWaitRunsOnALaterPassInOrder();
    void aCallQueuedByACallBelongsToALaterPass();
    void aWaitingCallOnTheMainThreadRunsAtOnce();
    void aWaitingCallFromAWorkerRunsOnTheMainThread();
    void pumpingWaitsAtMostItsTime();
    void endingWorkersServesTheirCallsAndCutsTheirSleep();
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
    QElapsedTimer time;
    time.start();
    platform::pumpEvents(10ms);
    QVERIFY(time.elapsed() < 200);
}

void MainThreadTest::endingWorkersServesTheirCallsAndCutsTheirSleep()
{
    std::atomic<bool> sleptWhole = true;
    bool called = false;
    QElapsedTimer time;
    time.start();
    {
        platform::WorkerThreads workers;
        workers.start([&] {
            sleptWhole = workers.sleepFor(60s);
            platform::performOnMainThreadAndWait([&] { called = true; });
        });
    }
    QVERIFY(!sleptWhole);
    QVERIFY(called);
    QVERIFY(time.elapsed() < 5000);
}

QTEST_GUILESS_MAIN(MainThreadTest)
#include "MainThreadTest.moc"
