// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Threads/SerialQueue.h"

#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QTest>

#include <csignal>
#include <future>
#include <numeric>

using namespace std::chrono_literals;

class SerialQueueTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void entriesAreHandledInOrderOnAThreadOfTheirOwn();
    void aFullBatchIsFollowedByAnother();
    void whenTheRushIsOverTheMemoryOfOneBatchIsKept();
    void waitingReturnsWhenWhatWasAddedBeforeIsHandled();
    void waitingInsideAHandlerReturnsAtOnce();
    void waitingWithoutEntriesReturnsAtOnce();
    void anEntryAddedByAHandlerIsHandledLater();
    void pendingCountsTheEntryThatIsBeingHandled();
    void stoppingLeavesOutWhatIsLeft();
    void stoppingDoesNotWaitLongerThanAsked();
    void entriesAddedAfterStoppingAreDropped();
    void theDestructorWaitsForTheHandler();
    void severalThreadsAddInTheirOwnOrder();
    void severalThreadsWait();
    void theThreadTakesNoSignals();
    void anIdleThreadDoesNotWakeUp();
};

namespace {

constexpr int fullSize = 4;

struct Numbers {
    std::vector<int> all;

    void add(int number) { all.push_back(number); }
    std::size_t count() const { return all.size(); }
    bool isFull() const { return all.size() == fullSize; }
    void clear() { all.clear(); }
};

// Counts itself.
class Counted : public Numbers {
public:
    Counted() { ++alive; }
    Counted(Counted &&other) noexcept : Numbers(std::move(other)) { ++alive; }
    Counted &operator=(Counted &&) = default;
    Counted(const Counted &) = delete;
    Counted &operator=(const Counted &) = delete;
    ~Counted() { --alive; }

    static std::atomic<int> alive;
};

std::atomic<int> Counted::alive = 0;

using Queue = platform::SerialQueue<Numbers>;

std::vector<int> numbers(int count)
{
    std::vector<int> all(static_cast<std::size_t>(count));
    std::iota(all.begin(), all.end(), 0);
    return all;
}

} // namespace

void SerialQueueTest::entriesAreHandledInOrderOnAThreadOfTheirOwn()
{
    std::vector<int> handled;
    std::thread::id thread;
    Queue queue("test", [&](const Numbers &batch) {
        handled.insert(handled.end(), batch.all.begin(), batch.all.end());
        thread = std::this_thread::get_id();
    });
    for (const int number : numbers(1000)) {
        queue.add(number);
        if (number % 100 == 0) {
            std::this_thread::sleep_for(1ms);
        }
    }
    queue.waitUntilIdle();
    QCOMPARE(handled, numbers(1000));
    QVERIFY(thread != std::this_thread::get_id());
}

void SerialQueueTest::aFullBatchIsFollowedByAnother()
{
    std::promise<void> go;
    std::vector<std::size_t> sizes;
    Queue queue("test", [&, ready = go.get_future().share()](const Numbers &batch) {
        ready.wait();
        sizes.push_back(batch.count());
    });
    queue.add(0);
    while (!queue.isCurrentThread() && queue.pending() == 0) {
    }
    std::this_thread::sleep_for(5ms); // the first one is most likely taken
    for (int number = 1; number < 11; ++number) {
        queue.add(number);
    }
    go.set_value();
    queue.waitUntilIdle();
    QCOMPARE(std::accumulate(sizes.begin(), sizes.end(), std::size_t(0)), std::size_t(11));
    QVERIFY(*std::max_element(sizes.begin(), sizes.end()) == fullSize);
}

void SerialQueueTest::whenTheRushIsOverTheMemoryOfOneBatchIsKept()
{
    {
        platform::SerialQueue<Counted> queue("test", [](const Counted &) {});
        for (int round = 0; round < 3; ++round) {
            for (int number = 0; number < 100 * fullSize; ++number) {
                queue.add(number);
            }
            queue.waitUntilIdle();
            QTRY_COMPARE(Counted::alive.load(), 1);
        }
    }
    QCOMPARE(Counted::alive.load(), 0);
}

void SerialQueueTest::waitingReturnsWhenWhatWasAddedBeforeIsHandled()
{
    std::atomic<int> handled = 0;
    Queue queue("test", [&](const Numbers &batch) {
        std::this_thread::sleep_for(1ms);
        handled += static_cast<int>(batch.count());
    });
    for (int round = 1; round <= 20; ++round) {
        queue.add(round);
        queue.waitUntilIdle();
        QCOMPARE(handled.load(), round);
        QCOMPARE(queue.pending(), std::size_t(0));
    }
}

void SerialQueueTest::waitingInsideAHandlerReturnsAtOnce()
{
    std::function<void()> wait;
    std::atomic<bool> returned = false;
    Queue queue("test", [&](const Numbers &) {
        wait();
        returned = true;
    });
    wait = [&] { queue.waitUntilIdle(); };
    queue.add(1);
    queue.waitUntilIdle();
    QVERIFY(returned);
}

void SerialQueueTest::waitingWithoutEntriesReturnsAtOnce()
{
    Queue queue("test", [](const Numbers &) {});
    queue.waitUntilIdle();
    queue.add(1);
    queue.waitUntilIdle();
    queue.waitUntilIdle();
    QCOMPARE(queue.pending(), std::size_t(0));
}

void SerialQueueTest::anEntryAddedByAHandlerIsHandledLater()
{
    std::function<void(int)> add;
    std::vector<int> handled;
    Queue queue("test", [&](const Numbers &batch) {
        for (const int number : batch.all) {
            handled.push_back(number);
            if (number < 3) {
                add(number + 1);
            }
        }
    });
    add = [&](int number) { queue.add(number); };
    queue.add(0);
    while (queue.pending() > 0) {
        queue.waitUntilIdle();
    }
    QCOMPARE(handled, numbers(4));
}

void SerialQueueTest::pendingCountsTheEntryThatIsBeingHandled()
{
    std::promise<void> begun;
    std::promise<void> go;
    Queue queue("test", [&, ready = go.get_future().share()](const Numbers &batch) {
        if (batch.all.front() == 0) {
            begun.set_value();
        }
        ready.wait();
    });
    QCOMPARE(queue.pending(), std::size_t(0));
    queue.add(0);
    begun.get_future().wait();
    QCOMPARE(queue.pending(), std::size_t(1));
    queue.add(1);
    QCOMPARE(queue.pending(), std::size_t(2));
    go.set_value();
    queue.waitUntilIdle();
    QCOMPARE(queue.pending(), std::size_t(0));
}

void SerialQueueTest::stoppingLeavesOutWhatIsLeft()
{
    std::promise<void> begun;
    std::promise<void> go;
    std::vector<int> handled;
    std::function<bool()> isStopped;
    Queue queue("test", [&](const Numbers &batch) {
        for (const int number : batch.all) {
            if (isStopped()) {
                return;
            }
            if (number == 0) {
                begun.set_value();
                go.get_future().wait();
            }
            handled.push_back(number);
        }
    });
    isStopped = [&] { return queue.isStopped(); };
    queue.add(0);
    begun.get_future().wait();
    for (int number = 1; number < 100; ++number) {
        queue.add(number);
    }
    std::thread releaser([&] {
        while (!queue.isStopped()) {
            std::this_thread::sleep_for(1ms);
        }
        go.set_value();
    });
    QVERIFY(queue.stop(60s));
    releaser.join();
    QCOMPARE(handled, numbers(1));
    queue.waitUntilIdle();
    QVERIFY(queue.stop(0ms));
}

void SerialQueueTest::stoppingDoesNotWaitLongerThanAsked()
{
    std::promise<void> begun;
    std::promise<void> go;
    std::atomic<bool> left = false;
    {
        Queue queue("test", [&](const Numbers &) {
            begun.set_value();
            go.get_future().wait();
            left = true;
        });
        queue.add(0);
        begun.get_future().wait();
        QVERIFY(!queue.stop(10ms));
        QVERIFY(!left);
        queue.waitUntilIdle(); // nothing will be handled any more
        go.set_value();
    }
    QVERIFY(left);
}

void SerialQueueTest::entriesAddedAfterStoppingAreDropped()
{
    std::atomic<int> handled = 0;
    Queue queue("test", [&](const Numbers &) { ++handled; });
    QVERIFY(queue.stop(1s));
    queue.add(1);
    queue.waitUntilIdle();
    QCOMPARE(queue.pending(), std::size_t(0));
    QCOMPARE(handled.load(), 0);
}

void SerialQueueTest::theDestructorWaitsForTheHandler()
{
    std::promise<void> begun;
    std::atomic<bool> left = false;
    {
        Queue queue("test", [&](const Numbers &) {
            begun.set_value();
            std::this_thread::sleep_for(50ms);
            left = true;
        });
        queue.add(0);
        begun.get_future().wait();
    }
    QVERIFY(left);
}

void SerialQueueTest::severalThreadsAddInTheirOwnOrder()
{
    constexpr int threads = 4;
    constexpr int each = 5000;
    std::vector<std::vector<int>> handled(threads);
    Queue queue("test", [&](const Numbers &batch) {
        for (const int number : batch.all) {
            handled[static_cast<std::size_t>(number / each)].push_back(number % each);
        }
    });
    std::vector<std::thread> adders;
    adders.reserve(threads);
    for (int thread = 0; thread < threads; ++thread) {
        adders.emplace_back([&queue, thread] {
            for (int number = 0; number < each; ++number) {
                queue.add(thread * each + number);
            }
        });
    }
    for (auto &adder : adders) {
        adder.join();
    }
    queue.waitUntilIdle();
    for (const auto &ofOneThread : handled) {
        QCOMPARE(ofOneThread, numbers(each));
    }
}

void SerialQueueTest::severalThreadsWait()
{
    std::atomic<int> handled = 0;
    std::atomic<bool> early = false;
    Queue queue("test", [&](const Numbers &batch) { handled += static_cast<int>(batch.count()); });
    constexpr int threads = 4;
    std::vector<std::thread> all;
    all.reserve(threads);
    for (int thread = 0; thread < threads; ++thread) {
        all.emplace_back([&] {
            for (int number = 0; number < 200; ++number) {
                const int before = handled;
                queue.add(number);
                queue.waitUntilIdle();
                early = early || handled <= before;
            }
        });
    }
    for (auto &thread : all) {
        thread.join();
    }
    QCOMPARE(handled.load(), 800);
    QVERIFY(!early);
}

void SerialQueueTest::theThreadTakesNoSignals()
{
    sigset_t blocked;
    sigemptyset(&blocked);
    Queue queue("test", [&](const Numbers &) { ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked); });
    queue.add(1);
    queue.waitUntilIdle();
    for (const int signal : {SIGTERM, SIGCHLD, SIGUSR1, SIGALRM, SIGXFSZ}) {
        QCOMPARE(sigismember(&blocked, signal), 1);
    }
    sigset_t own;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &own);
    QCOMPARE(sigismember(&own, SIGTERM), 0);
}

void SerialQueueTest::anIdleThreadDoesNotWakeUp()
{
    // How often the threads of that name have been switched, from the system's books.
    const auto switches = [] {
        long all = 0;
        const QDir tasks(QStringLiteral("/proc/self/task"));
        for (const auto &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile status(tasks.filePath(task + QStringLiteral("/status")));
            if (status.open(QIODevice::ReadOnly)) {
                const auto text = status.readAll();
                if (text.startsWith("Name:\tidle-test\n")) {
                    for (const auto &line : text.split('\n')) {
                        all +=
                            line.contains("ctxt_switches") ? line.split('\t').last().toLong() : 0;
                    }
                }
            }
        }
        return all;
    };
    Queue queue("idle-test", [](const Numbers &) {});
    queue.add(1);
    queue.waitUntilIdle();
    // Within 20 ms, or later on a busy machine.
    long before = 0;
    for (int tries = 0; tries < 100; ++tries) {
        before = switches();
        QVERIFY(before > 0);
        QTest::qSleep(100);
        if (switches() == before) {
            break;
        }
    }
    QCOMPARE(switches(), before);
    // And it is there again when it is needed.
    queue.add(2);
    queue.waitUntilIdle();
    QCOMPARE(queue.pending(), std::size_t(0));
}

TEST_CLASS(SerialQueueTest, QCoreApplication)
#include "SerialQueueTest.moc"
