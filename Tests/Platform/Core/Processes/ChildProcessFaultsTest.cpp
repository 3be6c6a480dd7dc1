// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Files/ReadToEnd.h"
#include "Platform/Core/Processes/ChildProcess.h"
#include "Tests/Support/Children.h"
#include "Tests/Support/FaultMatrix.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <thread>

using platform::ChildProcess;
using test::text;
using Stream = ChildProcess::Stream;

Q_DECLARE_METATYPE(Stream)

// Commands that are launched, read and waited for while system calls fail.
class ChildProcessFaultsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void aLaunchSucceedsOrSaysWhy_data();
    void aLaunchSucceedsOrSaysWhy();
    void interruptionsAndShortReadsLoseNoOutput();
    void theEndIsToldWhateverIsMissingForWaiting_data();
    void theEndIsToldWhateverIsMissingForWaiting();
    void whatNobodyWaitsForLeavesNoZombie();
    void withoutDescriptorsAndThreadsTheNextCommandReaps();
};

namespace {

constexpr auto launching = test::Open | test::Spawn | test::Pipe | test::Duplicate;
constexpr auto waiting = test::Process | test::Event | test::Wait | test::Thread;

// What can only be delayed.
constexpr std::array delays{test::FaultKind{"EINTR", test::Outcome::Fails, EINTR},
                            test::FaultKind{"short count", test::Outcome::FallsShort, 0}};

std::unique_ptr<ChildProcess> command(const char *path, const QStringList &arguments, Stream stream)
{
    auto process = std::make_unique<ChildProcess>();
    process->setLaunchPath(text(path));
    process->setArguments(arguments);
    process->setStandardInput(stream);
    process->setStandardOutput(stream);
    process->setStandardError(stream);
    return process;
}

bool isSystemsWord(const QString &reason)
{
    return std::any_of(test::faultKinds.begin(), test::faultKinds.end(), [&](const auto &kind) {
        return kind.error != 0 && reason.endsWith(qt_error_string(kind.error));
    });
}

QString noChildren(bool)
{
    return test::losesItsChildren() ? QString() : text("a child is left");
}

// A command that nobody waits for. It ends when its standard input does: after that was decided.
void launchAndForget()
{
    command("/bin/cat", {}, Stream::Pipe)->launch();
}

} // namespace

void ChildProcessFaultsTest::initTestCase()
{
    test::waitInEventLoop();
    launchAndForget(); // what the reaper opens stays open
    QVERIFY(test::losesItsChildren());
}

void ChildProcessFaultsTest::cleanup()
{
    QVERIFY(test::losesItsChildren());
}

void ChildProcessFaultsTest::aLaunchSucceedsOrSaysWhy_data()
{
    QTest::addColumn<Stream>("stream");
    QTest::newRow("inherited") << Stream::Inherited;
    QTest::newRow("null device") << Stream::NullDevice;
    QTest::newRow("pipes") << Stream::Pipe;
}

void ChildProcessFaultsTest::aLaunchSucceedsOrSaysWhy()
{
    QFETCH(Stream, stream);
    std::unique_ptr<ChildProcess> process;
    QString reason;
    test::underEveryFault(
        launching,
        [&] {
            process = command("/bin/sh", {text("-c"), text("exit 3")}, stream);
            reason = QString();
        },
        [&] {
            try {
                process->launch();
            } catch (const platform::Exception &exception) {
                reason = exception.reason();
                return false;
            }
            process->waitUntilExit();
            process->standardInput().close();
            process->standardOutput().close();
            process->standardError().close();
            return true;
        },
        [&](bool launched) {
            if (launched) {
                return process->terminationStatus() == 3 ? noChildren(true)
                                                         : text("the status is wrong");
            }
            if (!isSystemsWord(reason)) {
                return text("no reason, but ") + reason;
            }
            if (process->isRunning() || !test::hasNoChildren()) {
                return text("something was launched");
            }
            process->launch(); // nothing of the failure is left in it
            process->waitUntilExit();
            return process->terminationStatus() == 3 ? QString() : text("the next time fails");
        });
}

void ChildProcessFaultsTest::interruptionsAndShortReadsLoseNoOutput()
{
    const QByteArray expected(200000, '\0');
    QByteArray output;
    test::underFaults(
        delays, test::Threads::Own, test::Read | test::Wait, [&] { output.clear(); },
        [&] {
            auto process = command("/usr/bin/head", {text("-c"), text("200000"), text("/dev/zero")},
                                   Stream::Pipe);
            process->launch();
            output = platform::readToEnd(process->standardOutput().fd());
            process->waitUntilExit();
            return process->terminationStatus() == 0;
        },
        [&](bool ended) {
            return ended && output == expected ? noChildren(true) : text("not all was read");
        });
}

void ChildProcessFaultsTest::theEndIsToldWhateverIsMissingForWaiting_data()
{
    QTest::addColumn<bool>("isMainThread");
    QTest::addColumn<QString>("script");
    const auto add = [](const char *row, bool isMainThread, const char *script) {
        QTest::newRow(row) << isMainThread << text(script);
    };
    add("short, main thread", true, "exit 4");
    add("long, main thread", true, "sleep 0.01; exit 4");
    add("short, worker", false, "exit 4");
    add("long, worker", false, "sleep 0.01; exit 4");
}

void ChildProcessFaultsTest::theEndIsToldWhateverIsMissingForWaiting()
{
    QFETCH(bool, isMainThread);
    QFETCH(QString, script);
    int status = -1;
    // A worker that waits needs no call that can fail but the waiting itself.
    test::underFaults(
        test::faultKinds, isMainThread ? test::Threads::Own : test::Threads::All,
        test::Process | test::Event | test::Wait, [&] { status = -1; },
        [&] {
            const auto run = [&] {
                const auto process = test::shell(script);
                process->launch();
                process->waitUntilExit();
                status = process->terminationStatus();
            };
            if (isMainThread) {
                run();
            } else {
                std::thread(run).join();
            }
            return true;
        },
        [&](bool) { return status == 4 ? noChildren(true) : text("the status is wrong"); });
}

void ChildProcessFaultsTest::whatNobodyWaitsForLeavesNoZombie()
{
    test::underFaults(
        test::faultKinds, test::Threads::All, test::Process | test::Event | test::Wait, [] {},
        [] {
            launchAndForget();
            launchAndForget();
            return true;
        },
        noChildren);
}

void ChildProcessFaultsTest::withoutDescriptorsAndThreadsTheNextCommandReaps()
{
    const auto before = test::openDescriptors();
    {
        const test::Faults faults({waiting, 1, test::Outcome::Fails, EAGAIN, true, false});
        launchAndForget();
        QVERIFY(test::Faults::haveStruck());
    }
    siginfo_t left{};
    QCOMPARE(::waitid(P_ALL, 0, &left, WEXITED | WNOWAIT), 0);
    launchAndForget();
    QVERIFY(test::losesItsChildren());
    QVERIFY(test::becomesTrue([&] { return test::openDescriptors() <= before; }));
}

TEST_CLASS(ChildProcessFaultsTest, QCoreApplication)
#include "ChildProcessFaultsTest.moc"
