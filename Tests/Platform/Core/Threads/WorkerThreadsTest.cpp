// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Threads/WorkerThreads.h"

#include "Platform/Core/Threads/SerialQueue.h"
#include "Platform/Core/Trees/FolderSize.h"
#include "Tests/Platform/Core/Applications/ApplicationFixture.h"
#include "Tests/Platform/Desktop/ApplicationPanel/ApplicationPanelFixture.h"
#include "Tests/Support/Faults/Faults.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <memory>
#include <numeric>
#include <vector>

namespace {

// Nobody gets a thread.
const test::Fault noThreads{test::Thread, 1, test::Outcome::Fails, EAGAIN, true, true};

struct Numbers {
    std::vector<int> all;

    void add(int number) { all.push_back(number); }
    std::size_t count() const { return all.size(); }
    bool isFull() const { return false; }
    void clear() { all.clear(); }
};

} // namespace

// What becomes of work for other threads when the system has none to give.
class WorkerThreadsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aWorkerTakesNoSignals();
    void whoStartsAWorkerIsToldThatThereIsNone();
    void onceThereAreThreadsAgainAWorkerStarts();
    void withoutAThreadAFolderIsMeasured();
    void withoutAThreadApplicationsAreListed();
    void withoutAThreadWhoWaitsForAQueueDoesItsWork();
    void aQueueGetsItsThreadWithTheNextEntry();
};

void WorkerThreadsTest::aWorkerTakesNoSignals()
{
    sigset_t blocked{};
    {
        platform::WorkerThreads workers;
        QVERIFY(workers.start([&] { ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked); }));
    }
    QVERIFY(::sigismember(&blocked, SIGTERM) == 1 && ::sigismember(&blocked, SIGINT) == 1);
}

void WorkerThreadsTest::whoStartsAWorkerIsToldThatThereIsNone()
{
    std::atomic<bool> hasRun = false;
    platform::WorkerThreads workers;
    {
        const test::Faults faults(noThreads);
        QVERIFY(!workers.start([&] { hasRun = true; }));
        QVERIFY(test::Faults::haveStruck());
    }
    QCOMPARE(workers.running(), 0);
    workers.end();
    QVERIFY(!hasRun);
}

void WorkerThreadsTest::onceThereAreThreadsAgainAWorkerStarts()
{
    std::atomic<int> runs = 0;
    {
        platform::WorkerThreads workers;
        QVERIFY(workers.start([&] { ++runs; }));
        {
            const test::Faults faults(noThreads);
            QVERIFY(!workers.start([&] { ++runs; }));
        }
        QVERIFY(workers.start([&] { ++runs; }));
    }
    QCOMPARE(runs, 2);
}

void WorkerThreadsTest::withoutAThreadAFolderIsMeasured()
{
    const QTemporaryDir folder;
    for (auto number = 0; number < 10; ++number) {
        const QDir sub(folder.filePath(QString::number(number)));
        QVERIFY(QDir().mkpath(sub.path()));
        QFile file(sub.filePath(QStringLiteral("file")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("12345") == 5);
    }
    const test::Faults faults(noThreads);
    QCOMPARE(platform::sizeOfItem(folder.path()), quint64(50));
    QVERIFY(test::Faults::haveStruck());
}

void WorkerThreadsTest::withoutAThreadApplicationsAreListed()
{
    const test::DataFolders data;
    const test::Folder folder;
    test::makeApp(folder / "Zebra.app", "z");
    const test::Faults faults(noThreads);
    const test::OpenedPanel opened(test::text(folder.path()));
    QTRY_COMPARE(opened.names(), QStringList(QStringLiteral("Zebra")));
    QVERIFY(test::Faults::haveStruck());
}

void WorkerThreadsTest::withoutAThreadWhoWaitsForAQueueDoesItsWork()
{
    std::vector<int> handled;
    std::unique_ptr<platform::SerialQueue<Numbers>> queue;
    queue = std::make_unique<platform::SerialQueue<Numbers>>("test", [&](const Numbers &numbers) {
        handled.insert(handled.end(), numbers.all.begin(), numbers.all.end());
        if (handled.size() == 10) {
            queue->add(10); // by the handler, which is the thread of the queue now
            queue->waitUntilIdle();
        }
    });
    const test::Faults faults(noThreads);
    for (auto number = 0; number < 10; ++number) {
        queue->add(number);
    }
    QCOMPARE(queue->pending(), std::size_t(10));
    queue->waitUntilIdle();
    QCOMPARE(queue->pending(), std::size_t(0));
    std::vector<int> all(11);
    std::iota(all.begin(), all.end(), 0);
    QCOMPARE(handled, all);
}

void WorkerThreadsTest::aQueueGetsItsThreadWithTheNextEntry()
{
    std::vector<int> handled;
    auto isElsewhere = false;
    platform::SerialQueue<Numbers> queue("test", [&](const Numbers &numbers) {
        handled.insert(handled.end(), numbers.all.begin(), numbers.all.end());
        isElsewhere = isElsewhere || (!numbers.all.empty() && ::gettid() != ::getpid());
    });
    {
        const test::Faults faults(noThreads);
        queue.add(1);
    }
    queue.add(2);
    queue.waitUntilIdle();
    QCOMPARE(handled, (std::vector<int>{1, 2}));
    QVERIFY(isElsewhere);
}

TEST_CLASS(WorkerThreadsTest, QApplication)
#include "WorkerThreadsTest.moc"
