// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Text/Console.h"
#include "Tests/Shared/Tasks/TaskFixture.h"
#include "Tests/Support/FaultMatrix.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

using test::text;
using LogOutput = ZQTaskEx::LogOutput;

// The task runner while system calls fail: each entry point gives its required result and report.
class ZQTaskExFaultsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void aRunSucceedsOrIsLoggedAsAnException();
    void aRunWithoutWaitingIsLaunchedOrLoggedAsAnException();
    void aTerminationCodeIsRightOrAnException();
    void dataIsWholeOrNullAndOnTheConsole_data();
    void dataIsWholeOrNullAndOnTheConsole();
    void textIsWholeOrEmptyAndOnTheConsole();
    void whatIsMissingForReapingSpoilsNoResult();
    void interruptionsAndShortReadsLoseNoOutput();
    void withoutAThreadThereIsNoTimeoutButTheResult();

    void asynchronousOutputIsWholeOrAnExceptionIsLogged();
    void interruptionsAndShortReadsLoseNoAsynchronousOutput();
    void withoutAThreadAnAsynchronousCommandIsRefused();

private:
    void prepare();
    QString complaint(bool succeeded, const QStringList &reports, const QStringList &others) const;
    QString complaintOnConsole(bool succeeded);
    QString complaintInLog(bool succeeded);

    std::unique_ptr<test::ConsoleCapture> m_console;
    int m_oldLines = 0;
};

namespace {

constexpr auto launching = test::Open | test::Spawn | test::Pipe | test::Duplicate;
constexpr auto waiting = test::Process | test::Event | test::Wait;

// What can only be delayed.
constexpr std::array delays{test::FaultKind{"EINTR", test::Outcome::Fails, EINTR},
                            test::FaultKind{"short count", test::Outcome::FallsShort, 0}};

const QString shell = text("/bin/sh");
const QString printing = text("head -c 200000 /dev/zero; echo error >&2; exit 2");
const QByteArray printed(200000, '\0');

QStringList carryOut(const QString &script)
{
    return {text("-c"), script};
}

bool isSystemsWord(const QString &reason)
{
    return std::any_of(test::faultKinds.begin(), test::faultKinds.end(), [&](const auto &kind) {
        return kind.error != 0 && (reason == qt_error_string(kind.error) ||
                                   reason == text("/dev/null: ") + qt_error_string(kind.error));
    });
}

// What an asynchronous command gave, once its reader has ended.
struct Asynchronous {
    QByteArray output;
    bool hasEnded = false;
};

Asynchronous asynchronous(const QString &script)
{
    const auto result = std::make_shared<Asynchronous>(); // the reader's until it ends
    auto runner = ZQTaskEx::create();
    const std::weak_ptr<ZQTaskEx> reader = runner;
    runner->asyncDataFromTask(shell, carryOut(script),
                              [result](const QByteArray &data, ZQTaskEx &, const QVariant &) {
                                  result->output += data;
                                  result->hasEnded = data.isEmpty();
                              });
    runner.reset();
    if (!test::becomesTrue([&] { return reader.expired(); })) {
        qFatal("the reader does not end");
    }
    disarmFault();
    return *result;
}

} // namespace

void ZQTaskExFaultsTest::initTestCase()
{
    m_console = std::make_unique<test::ConsoleCapture>();
    platform::consoleLine(text("from now on the connection stays open"));
    test::waitInEventLoop();
    asynchronous(text("exec >&-; sleep 0.1")); // and what the reaper opens
    QVERIFY(test::losesItsChildren());
}

void ZQTaskExFaultsTest::cleanup()
{
    QVERIFY(test::losesItsChildren());
}

void ZQTaskExFaultsTest::prepare()
{
    test::startTaskLog();
    m_oldLines = m_console->lines().size();
}

// The reports of a failure, and those that must not be.
QString ZQTaskExFaultsTest::complaint(bool succeeded, const QStringList &reports,
                                      const QStringList &others) const
{
    if (!test::losesItsChildren()) {
        return text("a child is left");
    }
    if (!others.isEmpty()) {
        return text("reported elsewhere: ") + others.join(u'|');
    }
    const auto start = text("Exception running task /bin/sh: ");
    const auto isReported = reports.size() == 1 && reports.first().startsWith(start) &&
                            isSystemsWord(reports.first().mid(start.size()));
    return (succeeded ? reports.isEmpty() : isReported)
               ? QString()
               : text("the report is wrong: ") + reports.join(u'|');
}

QString ZQTaskExFaultsTest::complaintOnConsole(bool succeeded)
{
    return complaint(succeeded, m_console->lines().mid(m_oldLines), test::taskLog());
}

QString ZQTaskExFaultsTest::complaintInLog(bool succeeded)
{
    return complaint(succeeded, test::taskLog(), m_console->lines().mid(m_oldLines));
}

void ZQTaskExFaultsTest::aRunSucceedsOrIsLoggedAsAnException()
{
    test::underEveryFault(
        launching, [&] { prepare(); },
        [] { return ZQTaskEx::runTask(shell, carryOut(text("exit 1"))); },
        [&](bool succeeded) { return complaintInLog(succeeded); });
}

void ZQTaskExFaultsTest::aRunWithoutWaitingIsLaunchedOrLoggedAsAnException()
{
    const auto file = text("/tmp/has-run");
    test::underEveryFault(
        launching,
        [&] {
            prepare();
            QFile::remove(file);
        },
        [&] {
            ZQTaskEx::runTaskAndReturn(shell, carryOut(text("echo > /tmp/has-run")));
            disarmFault();
            return test::losesItsChildren() && QFile::exists(file);
        },
        [&](bool succeeded) { return complaintInLog(succeeded); });
}

void ZQTaskExFaultsTest::aTerminationCodeIsRightOrAnException()
{
    qint64 code = 0;
    QString reason;
    test::underEveryFault(
        launching,
        [&] {
            prepare();
            code = -2;
            reason = QString();
        },
        [&] {
            try {
                code = ZQTaskEx::terminationCodeFromTask(shell, carryOut(text("exit 7")));
            } catch (const platform::Exception &exception) {
                reason = exception.reason();
            }
            return code == 7;
        },
        [&](bool succeeded) {
            if (!succeeded && (code != -2 || !isSystemsWord(reason))) {
                return text("the code is wrong or the reason: ") + reason;
            }
            return complaintInLog(true); // the exception is for the caller
        });
}

void ZQTaskExFaultsTest::dataIsWholeOrNullAndOnTheConsole_data()
{
    QTest::addColumn<bool>("isCaptured");
    QTest::addColumn<QString>("script");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("standard output") << true << printing << printed;
    QTest::newRow("standard error") << true << text("echo error >&2") << QByteArray("error\n");
    QTest::newRow("none") << true << text("exit 0") << QByteArray("");
    QTest::newRow("not captured") << false << text("echo error >&2") << QByteArray("error\n");
}

void ZQTaskExFaultsTest::dataIsWholeOrNullAndOnTheConsole()
{
    QFETCH(bool, isCaptured);
    QFETCH(QString, script);
    QFETCH(QByteArray, expected);
    QByteArray data;
    test::underEveryFault(
        launching | test::Read, [&] { prepare(); },
        [&] {
            data = ZQTaskEx::dataFromTask(shell, carryOut(script), nullptr, std::nullopt,
                                          isCaptured ? LogOutput::Yes : LogOutput::No);
            return !data.isNull();
        },
        [&](bool succeeded) {
            return succeeded && data != expected ? text("not all was read")
                                                 : complaintOnConsole(succeeded);
        });
}

void ZQTaskExFaultsTest::textIsWholeOrEmptyAndOnTheConsole()
{
    QString result;
    test::underEveryFault(
        launching | test::Read, [&] { prepare(); },
        [&] {
            result = ZQTaskEx::stringFromTask(shell, carryOut(text("echo output")));
            return !result.isEmpty();
        },
        [&](bool succeeded) {
            return result.isNull() || (succeeded && result != text("output\n"))
                       ? text("the text is wrong")
                       : complaintOnConsole(succeeded);
        });
}

void ZQTaskExFaultsTest::whatIsMissingForReapingSpoilsNoResult()
{
    test::underEveryFault(
        waiting, [&] { prepare(); },
        [] {
            const auto script = carryOut(text("echo output; exec sleep 0.005"));
            ZQTaskEx::runTaskAndReturn(shell, script);
            return ZQTaskEx::runTask(shell, script) &&
                   ZQTaskEx::terminationCodeFromTask(shell, script) == 0 &&
                   ZQTaskEx::dataFromTask(shell, script, nullptr) == QByteArray("output\n");
        },
        [&](bool succeeded) {
            return succeeded ? complaintInLog(true) : text("the result is wrong");
        });
}

void ZQTaskExFaultsTest::interruptionsAndShortReadsLoseNoOutput()
{
    test::underFaults(
        delays, test::Threads::Own, test::Read | waiting, [&] { prepare(); },
        [] { return ZQTaskEx::dataFromTask(shell, carryOut(printing), nullptr) == printed; },
        [&](bool succeeded) {
            return succeeded ? complaintOnConsole(true) : text("not all was read");
        });
}

void ZQTaskExFaultsTest::withoutAThreadThereIsNoTimeoutButTheResult()
{
    prepare();
    qint64 code = 0;
    {
        const test::Faults faults({test::Thread, 1, test::Outcome::Fails, EAGAIN, true, false});
        code = ZQTaskEx::terminationCodeFromTask(shell, carryOut(text("exit 7")),
                                                 std::chrono::seconds(0));
    }
    QCOMPARE(code, 7);
    QCOMPARE(m_console->lines().mid(m_oldLines),
             QStringList(text("No time-out for a task: no thread to be had")));
}

void ZQTaskExFaultsTest::asynchronousOutputIsWholeOrAnExceptionIsLogged()
{
    Asynchronous result;
    test::underFaults(
        test::faultKinds, test::Threads::All, launching | waiting | test::Read, [&] { prepare(); },
        [&] {
            result = asynchronous(printing);
            return result.hasEnded;
        },
        [&](bool succeeded) {
            if (succeeded ? result.output != printed : !printed.startsWith(result.output)) {
                return text("the output is wrong");
            }
            const auto log = test::taskLog();
            const auto isLogged =
                log.size() == 1 &&
                log.first().startsWith(text("Exception in -[ZQTaskEx launchAsyncTask]. NS"));
            if (succeeded ? !log.isEmpty() : !isLogged) {
                return text("the log is wrong: ") + log.join(u'|');
            }
            return test::losesItsChildren() ? QString() : text("a child is left");
        });
}

void ZQTaskExFaultsTest::interruptionsAndShortReadsLoseNoAsynchronousOutput()
{
    test::underFaults(
        delays, test::Threads::All, test::Read | test::Wait, [&] { prepare(); },
        [] {
            const auto result = asynchronous(printing);
            return result.hasEnded && result.output == printed;
        },
        [&](bool succeeded) {
            return succeeded ? complaintInLog(true) : text("not all was delivered");
        });
}

void ZQTaskExFaultsTest::withoutAThreadAnAsynchronousCommandIsRefused()
{
    prepare();
    Asynchronous result;
    {
        const test::Faults faults({test::Thread, 1, test::Outcome::Fails, EAGAIN, true, false});
        result = asynchronous(printing);
    }
    QVERIFY(result.output.isEmpty());
    QVERIFY(!result.hasEnded);
    QCOMPARE(test::taskLog(),
             QStringList(text("Unable to launch async task - no thread to read it")));
}

TEST_CLASS(ZQTaskExFaultsTest, QCoreApplication)
#include "ZQTaskExFaultsTest.moc"
