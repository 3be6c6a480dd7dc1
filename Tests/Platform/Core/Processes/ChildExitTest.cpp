// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/ReadToEnd.h"
#include "Platform/Core/Processes/ChildProcess.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Tests/Support/Children.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <QTimer>

#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <thread>
#include <vector>

using platform::ChildProcess;
using Stream = ChildProcess::Stream;
using test::text;

class ChildExitTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup();

    void waitingOnTheMainThreadDispatchesEvents();
    void waitingOnAWorkerDispatchesNone();
    void waitsOnTheMainThreadCanBeNested();
    void waitingGoesOnWhenTheApplicationQuits();
    void waitingNeedsNoFreeDescriptor();
    void signalsDoNotDisturbWaitingAndReading();
    void everyThreadMayAskWaitAndTerminate();
    void whatSomebodyElseHasReapedEndsWithoutAStatus();
    void aReapedNumberIsNeverSignalled();
    void aCommandThatNobodyWaitsForLeavesNoZombie();
    void theReaperNeedsNoFreeDescriptor();
    void aCommandWithTheReaperCanStillBeAskedAndTerminated();
};

namespace {

// While it lives, this process can open no more descriptors.
class NoFreeDescriptor {
public:
    NoFreeDescriptor()
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit none{0, m_before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoFreeDescriptor() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    NoFreeDescriptor(const NoFreeDescriptor &) = delete;
    NoFreeDescriptor &operator=(const NoFreeDescriptor &) = delete;

private:
    rlimit m_before{};
};

// The process number that the next process gets, where the system lets us say.
bool setNextProcess(pid_t number)
{
    QFile file(text("/proc/sys/kernel/ns_last_pid"));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           file.write(QByteArray::number(number - 1)) > 0;
}

} // namespace

void ChildExitTest::cleanup()
{
    QVERIFY(test::losesItsChildren());
}

void ChildExitTest::waitingOnTheMainThreadDispatchesEvents()
{
    const auto process = test::shell(text("read line"));
    process->setStandardInput(Stream::Pipe);
    process->launch();
    bool called = false;
    std::thread worker;
    QTimer::singleShot(0, [&] {
        worker = std::thread([&] {
            platform::performOnMainThreadAndWait([&] { called = true; });
            process->standardInput().close();
        });
    });
    process->waitUntilExit();
    worker.join();
    QVERIFY(called);
    QCOMPARE(process->terminationStatus(), 1);
}

void ChildExitTest::waitingOnAWorkerDispatchesNone()
{
    bool dispatched = false;
    const bool duringWait = test::onWorker([&] {
        QObject context;
        QTimer::singleShot(0, &context, [&] { dispatched = true; });
        const auto process = test::shell(text("sleep 0.2"));
        process->launch();
        process->waitUntilExit();
        return dispatched;
    });
    QVERIFY(!duringWait);
}

void ChildExitTest::waitsOnTheMainThreadCanBeNested()
{
    const auto outer = test::shell(text("sleep 0.1; exit 1"));
    const auto inner = test::shell(text("sleep 0.5; exit 2"));
    std::clock_t processorTime = 0;
    QTimer::singleShot(0, [&] {
        const auto start = std::clock();
        inner->launch();
        inner->waitUntilExit();
        processorTime = std::clock() - start;
    });
    outer->launch();
    outer->waitUntilExit();
    QCOMPARE(outer->terminationStatus(), 1);
    QCOMPARE(inner->terminationStatus(), 2);
    // The outer end, which is long there, must not keep the inner wait busy.
    QVERIFY(processorTime < CLOCKS_PER_SEC / 10);
}

void ChildExitTest::waitingGoesOnWhenTheApplicationQuits()
{
    bool called = false;
    std::thread worker;
    const auto process = test::shell(text("read line; exit 7"));
    process->setStandardInput(Stream::Pipe);
    QTimer::singleShot(0, [&] {
        QTimer::singleShot(0, [&] {
            QCoreApplication::quit();
            worker = std::thread([&] {
                platform::performOnMainThreadAndWait([&] { called = true; });
                process->standardInput().close();
            });
        });
        process->launch();
        process->waitUntilExit();
    });
    QCoreApplication::exec();
    worker.join();
    QVERIFY(called);
    QCOMPARE(process->terminationStatus(), 7);
}

void ChildExitTest::waitingNeedsNoFreeDescriptor()
{
    const auto process = test::shell(text("sleep 0.1; exit 8"));
    process->launch();
    {
        const NoFreeDescriptor none;
        process->waitUntilExit();
    }
    QCOMPARE(process->terminationStatus(), 8);
}

void ChildExitTest::signalsDoNotDisturbWaitingAndReading()
{
    struct sigaction before {};
    struct sigaction interrupting {};
    interrupting.sa_handler = [](int) {}; // and no SA_RESTART: every call is interrupted
    ::sigaction(SIGALRM, &interrupting, &before);
    const itimerval often{{0, 1000}, {0, 1000}};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    for (int i = 0; i < 5; ++i) {
        const auto process = test::shell(text("sleep 0.05; echo text; exit 9"));
        process->setStandardOutput(Stream::Pipe);
        process->launch();
        QCOMPARE(platform::readToEnd(process->standardOutput().fd()), QByteArray("text\n"));
        process->waitUntilExit();
        QCOMPARE(process->terminationStatus(), 9);
    }
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &before, nullptr);
}

void ChildExitTest::everyThreadMayAskWaitAndTerminate()
{
    for (int round = 0; round < 100; ++round) {
        const auto process = test::shell(text("exec sleep 60"));
        process->launch();
        std::vector<std::thread> threads;
        for (int i = 0; i < 6; ++i) {
            threads.emplace_back([&, i] {
                if (i % 3 == 0) {
                    process->terminate();
                } else if (i % 3 == 1) {
                    process->reapInBackground();
                }
                while (i % 2 == 0 && process->isRunning()) {
                    std::this_thread::yield();
                }
                process->waitUntilExit();
                if (process->isRunning() || process->terminationStatus() != SIGTERM) {
                    qFatal("not ended as it should");
                }
                process->terminate();
            });
        }
        for (auto &thread : threads) {
            thread.join();
        }
        QVERIFY(test::losesItsChildren());
    }
}

void ChildExitTest::whatSomebodyElseHasReapedEndsWithoutAStatus()
{
    const auto process = test::shell(text("exit 3"));
    process->launch();
    QCOMPARE(::waitpid(process->processIdentifier(), nullptr, 0), process->processIdentifier());
    process->waitUntilExit();
    QVERIFY(!process->isRunning());
    QCOMPARE(process->terminationStatus(), platform::ChildExit::unknownStatus);
    process->terminate();
}

void ChildExitTest::aReapedNumberIsNeverSignalled()
{
    const auto first = test::shell(text("exit 0"));
    first->launch();
    first->waitUntilExit();
    const auto number = first->processIdentifier();
    if (!setNextProcess(number)) {
        QSKIP("only root may choose the next process number");
    }
    const auto second = test::shell(text("read line; exit 4"));
    second->setStandardInput(Stream::Pipe);
    second->launch();
    QCOMPARE(second->processIdentifier(), number);
    first->terminate();
    second->standardInput().close();
    second->waitUntilExit();
    QCOMPARE(second->terminationStatus(), 4);
}

void ChildExitTest::aCommandThatNobodyWaitsForLeavesNoZombie()
{
    for (int i = 0; i < 20; ++i) {
        test::shell(i % 2 == 0 ? text("exit 0") : text("sleep 0.1"))->launch();
    }
    QVERIFY(!test::hasNoChildren());
    QVERIFY(test::losesItsChildren());
}

void ChildExitTest::theReaperNeedsNoFreeDescriptor()
{
    const auto before = test::openDescriptors();
    auto process = test::shell(text("sleep 0.1"));
    process->launch();
    {
        const NoFreeDescriptor none;
        process.reset();
    }
    QVERIFY(test::losesItsChildren());
    QCOMPARE(test::openDescriptors(), before);
}

void ChildExitTest::aCommandWithTheReaperCanStillBeAskedAndTerminated()
{
    const auto process = test::shell(text("exec sleep 60"));
    process->launch();
    process->reapInBackground();
    process->reapInBackground();
    QVERIFY(process->isRunning());
    process->terminate();
    process->waitUntilExit();
    QCOMPARE(process->terminationStatus(), SIGTERM);
}

TEST_CLASS(ChildExitTest, QCoreApplication)
#include "ChildExitTest.moc"
