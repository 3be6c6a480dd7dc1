// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Threads/BackgroundWork.h"

#include "Platform/Core/Threads/MainThread.h"
#include "Tests/Support/Faults/Faults.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>
#include <QTimer>

#include <cerrno>
#include <stdexcept>
#include <thread>

using namespace std::chrono_literals;

class BackgroundWorkTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theMainThreadDispatchesEventsMeanwhile();
    void theWorkMayCallTheMainThread();
    void aWorkerDoesItItself();
    void whatTheWorkThrowsIsThrown();
    void withoutAThreadTheWorkIsStillDone();
    void theWorkComesToItsEndWhenTheApplicationQuits();
};

void BackgroundWorkTest::theMainThreadDispatchesEventsMeanwhile()
{
    std::atomic<bool> dispatched = false;
    auto isElsewhere = false;
    QTimer::singleShot(0, this, [&] { dispatched = true; });
    platform::performInBackground([&] {
        isElsewhere = !platform::isMainThread();
        while (!dispatched) {
            std::this_thread::sleep_for(1ms);
        }
    });
    QVERIFY(isElsewhere);
}

void BackgroundWorkTest::theWorkMayCallTheMainThread()
{
    auto called = false;
    platform::performInBackground(
        [&] { platform::performOnMainThreadAndWait([&] { called = platform::isMainThread(); }); });
    QVERIFY(called);
}

void BackgroundWorkTest::aWorkerDoesItItself()
{
    QVERIFY(test::onWorker([] {
        const auto worker = std::this_thread::get_id();
        std::thread::id other;
        platform::performInBackground([&] { other = std::this_thread::get_id(); });
        return other == worker;
    }));
}

void BackgroundWorkTest::whatTheWorkThrowsIsThrown()
{
    QVERIFY_EXCEPTION_THROWN(
        platform::performInBackground([] { throw std::runtime_error("thrown"); }),
        std::runtime_error);
}

void BackgroundWorkTest::withoutAThreadTheWorkIsStillDone()
{
    auto isDone = false;
    const test::Faults noThread({test::Thread, 1, test::Outcome::Fails, EAGAIN, true, true});
    platform::performInBackground([&] { isDone = platform::isMainThread(); });
    QVERIFY(isDone);
}

void BackgroundWorkTest::theWorkComesToItsEndWhenTheApplicationQuits()
{
    std::atomic<bool> hasQuit = false;
    auto calls = 0;
    QTimer::singleShot(0, this, [&] {
        QCoreApplication::quit();
        hasQuit = true;
    });
    platform::performInBackground([&] {
        while (!hasQuit) {
            std::this_thread::sleep_for(1ms);
        }
        std::this_thread::sleep_for(50ms);
        platform::performOnMainThreadAndWait([&] { ++calls; });
    });
    QCOMPARE(calls, 1);
}

TEST_CLASS(BackgroundWorkTest, QCoreApplication)
#include "BackgroundWorkTest.moc"
