// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Threads/MainThread.h"
#include "Tests/Shared/Tasks/TaskFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <atomic>
#include <thread>

using namespace std::chrono_literals;
using test::text;

// 10,000 runs of all variants, a part of them in each test.
class ZQTaskExEnduranceTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void runsOnTheMainThread();
    void runsOnWorkers();
    void timedRuns();
    void asynchronousRuns();
    void runsThatCannotBeLaunched();

private:
    int m_descriptors = 0;
    int m_threads = 0;
};

namespace {

const auto trueProgram = QStringLiteral("/bin/true");
const auto echo = QStringLiteral("/bin/echo");
const auto word = QStringList(QStringLiteral("word"));
const QByteArray wordLine("word\n");

// One run of a variant without a time-out; whether it went well.
bool run(int variant)
{
    ZQTaskEx::Task task;
    switch (variant % 6) {
    case 0:
        return ZQTaskEx::runTask(trueProgram, {});
    case 1:
        return ZQTaskEx::dataFromTask(echo, word, nullptr) == wordLine;
    case 2:
        return ZQTaskEx::terminationCodeFromTask(QStringLiteral("/bin/false"), {}) == 1;
    case 3:
        ZQTaskEx::runTaskAndReturn(trueProgram, {});
        return true;
    case 4:
        return ZQTaskEx::dataFromTask(echo, word, &task) == wordLine && task.get() != nullptr;
    default:
        return ZQTaskEx::stringFromTask(echo, word) == QStringLiteral("word\n");
    }
}

// Has two workers do so many rounds each while the main thread dispatches events.
template <typename Work>
void onTwoWorkers(int rounds, Work work)
{
    std::atomic<int> running = 2;
    const auto rest = [&] {
        for (int i = 0; i < rounds; ++i) {
            work(i);
        }
        --running;
    };
    std::thread first(rest);
    std::thread second(rest);
    platform::pumpEventsUntil([&] { return running == 0; });
    first.join();
    second.join();
}

} // namespace

void ZQTaskExEnduranceTest::initTestCase()
{
    test::startTaskLog();
    // The reaper's thread stays.
    ZQTaskEx::runTaskAndReturn(QStringLiteral("/bin/sleep"), {QStringLiteral("0.1")});
    QVERIFY(test::losesItsChildren());
}

void ZQTaskExEnduranceTest::init()
{
    m_descriptors = test::openDescriptors();
    m_threads = test::threads();
}

void ZQTaskExEnduranceTest::cleanup()
{
    QVERIFY(test::losesItsChildren());
    QTRY_VERIFY_WITH_TIMEOUT(test::threads() <= m_threads, 30000);
    QTRY_VERIFY(test::openDescriptors() <= m_descriptors);
}

void ZQTaskExEnduranceTest::runsOnTheMainThread()
{
    for (int i = 0; i < 3000; ++i) {
        QVERIFY(run(i));
    }
}

void ZQTaskExEnduranceTest::runsOnWorkers()
{
    std::atomic<int> wrong = 0;
    onTwoWorkers(1500, [&](int i) { wrong += run(i) ? 0 : 1; });
    QCOMPARE(wrong.load(), 0);
}

void ZQTaskExEnduranceTest::timedRuns()
{
    std::atomic<int> wrong = 0;
    onTwoWorkers(600, [&](int i) {
        if (i % 4 == 0) {
            ZQTaskEx::runTask(trueProgram, {}, 0.5s); // may or may not be terminated
        } else if (i % 4 == 1) {
            wrong += ZQTaskEx::dataFromTask(echo, word, 5s) == wordLine ? 0 : 1;
        } else if (i % 4 == 2) {
            wrong += ZQTaskEx::terminationCodeFromTask(trueProgram, {}, 5s) == 0 ? 0 : 1;
        } else {
            ZQTaskEx::terminationCodeFromTask(trueProgram, {}, 0s);
        }
    });
    QCOMPARE(wrong.load(), 0);
}

void ZQTaskExEnduranceTest::asynchronousRuns()
{
    std::atomic<int> ends = 0;
    std::atomic<int> wrong = 0;
    const auto callback = [&](const QByteArray &data, ZQTaskEx &, const QVariant &) {
        wrong += data.isEmpty() || data == wordLine ? 0 : 1;
        ends += data.isEmpty() ? 1 : 0;
    };
    constexpr int rounds = 2400;
    constexpr int ended = rounds / 3;
    for (int i = 0; i < rounds; ++i) {
        const auto runner = ZQTaskEx::create();
        if (i % 3 == 0) {
            runner->asyncDataFromTask(QStringLiteral("/bin/sleep"), {QStringLiteral("60")},
                                      nullptr);
            runner->terminateAsyncTask();
        } else {
            runner->asyncDataFromTask(echo, word, callback);
        }
        if (i % 16 == 0) {
            QTRY_VERIFY_WITH_TIMEOUT(ends >= i - i / 3 - 8, 30000); // no crowd
        }
    }
    QTRY_COMPARE_WITH_TIMEOUT(ends.load(), rounds - ended, 30000);
    QCOMPARE(wrong.load(), 0);
}

void ZQTaskExEnduranceTest::runsThatCannotBeLaunched()
{
    const auto path = test::fileThatIsNoProgram();
    for (int i = 0; i < 200; ++i) {
        QVERIFY(!ZQTaskEx::runTask(path, {}));
        QVERIFY(ZQTaskEx::dataFromTask(path, {}, nullptr).isNull());
        ZQTaskEx::create()->asyncDataFromTask(path, {}, nullptr);
    }
}

TEST_CLASS(ZQTaskExEnduranceTest, QCoreApplication)
#include "ZQTaskExEnduranceTest.moc"
