// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Threads/WorkerThreads.h"
#include "Shared/Alerts/ZQAlert.h"
#include "Shared/Log/ZQLog.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/Faults/Faults.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <cerrno>
#include <cstring>

using namespace std::chrono_literals;
using platform::AlertPanel;
using Block = ZQAlert::Block;

// How waits for an alert end without anybody's answer.

namespace {

const auto headline = QStringLiteral("Headline");
const auto cancel = QStringLiteral("Cancel");

qint64 ask(QWidget *window)
{
    return ZQAlert::alertSheetWithMessageText(headline, {}, cancel, {}, {}, window, Block::Yes);
}

qint64 askFor(qint64 seconds)
{
    return ZQAlert::timedAlertSheetWithMessageText(headline, {}, cancel, {}, {}, nullptr, seconds);
}

} // namespace

class ZQAlertEndTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup();

    void aTimedAlertThatNobodyAnswersReturnsOneAfterItsInterval_data();
    void aTimedAlertThatNobodyAnswersReturnsOneAfterItsInterval();
    void aTimedAlertOfFiveSecondsReturnsOneAfterAboutFiveSeconds();
    void aTimedAlertThatIsAnsweredReturnsTheUsersCode();
    void theTimerFiresOnAnAlertThatIsGone();
    void theTimerOverwritesAnEarlierAnswer();
    void withoutAThreadTheTimerStillEndsTheAlert();
    void anIntervalOfZeroOrLessAnswersAtOnce();
    void theLongestIntervalWaits();
    void aDestroyedParentEndsTheWaitAsEscDoes();
    void aDestroyedParentEndsTheWaitOfAWorker();
    void quittingEndsTheWaitAsEscDoes();
    void quittingEndsNestedWaits();
    void quittingEndsTheWaitOfAWorker();
    void endingAWorkerEndsItsWait();
    void aProcessDoesNotWaitForItsTimers();
    void aProcessQuitsWhileAnAlertBlocks();
    void aProcessWithoutWindowsLogsTheAlert();
};

void ZQAlertEndTest::cleanup()
{
    QVERIFY(test::visibleAlert() == nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void ZQAlertEndTest::aTimedAlertThatNobodyAnswersReturnsOneAfterItsInterval_data()
{
    QTest::addColumn<bool>("onWorker");
    QTest::newRow("main thread") << false;
    QTest::newRow("worker") << true;
}

void ZQAlertEndTest::aTimedAlertThatNobodyAnswersReturnsOneAfterItsInterval()
{
    QFETCH(const bool, onWorker);
    QElapsedTimer time;
    time.start();
    QCOMPARE(onWorker ? test::onWorker([] { return askFor(1); }) : askFor(1), 1);
    QVERIFY(time.elapsed() >= 1000);
}

void ZQAlertEndTest::aTimedAlertOfFiveSecondsReturnsOneAfterAboutFiveSeconds()
{
    QElapsedTimer time;
    time.start();
    bool isLate = false; // a timer that is due later fires later, however busy the machine
    QTimer::singleShot(10s, this, [&] { isLate = true; });
    QCOMPARE(askFor(5), 1);
    QVERIFY(time.elapsed() >= 5000);
    QVERIFY(!isLate);
}

void ZQAlertEndTest::aTimedAlertThatIsAnsweredReturnsTheUsersCode()
{
    const test::AlertWatcher watcher(
        [](AlertPanel &alert) { test::click(alert, "alternateButton"); });
    QCOMPARE(askFor(3600), 0);
    QCOMPARE(test::onWorker([] { return askFor(3600); }), 0);
}

void ZQAlertEndTest::theTimerFiresOnAnAlertThatIsGone()
{
    const test::AlertWatcher watcher(
        [](AlertPanel &alert) { test::click(alert, "alternateButton"); });
    askFor(1);          // 0 unless the machine is too busy to answer in time
    QTest::qWait(1500); // the sanitizers watch what the timer touches now
}

void ZQAlertEndTest::theTimerOverwritesAnEarlierAnswer()
{
    ZQAlert object;
    object.alertDidEnd(nullptr, 0, nullptr);
    std::thread timer([&] { object.defaultReturnAfterTimeInterval(1); });
    QCOMPARE(object.returnCode(), 0);
    timer.join();
    QCOMPARE(object.returnCode(), 1);
    QVERIFY(object.alertEnded());
}

void ZQAlertEndTest::withoutAThreadTheTimerStillEndsTheAlert()
{
    const auto ask = [](qint64 seconds) {
        const test::Faults faults({test::Thread, 1, test::Outcome::Fails, EAGAIN, true, false});
        return askFor(seconds);
    };
    QCOMPARE(ask(1), 1);
    QCOMPARE(ask(0), 1);
    QCOMPARE(ask(std::numeric_limits<qint64>::min()), 1);
    QCOMPARE(test::onWorker([&] { return ask(1); }), 1);
    const test::AlertWatcher watcher(
        [](AlertPanel &alert) { test::click(alert, "alternateButton"); });
    QCOMPARE(ask(std::numeric_limits<qint64>::max()), 0);
}

void ZQAlertEndTest::anIntervalOfZeroOrLessAnswersAtOnce()
{
    for (int i = 0; i < 20; ++i) {
        QCOMPARE(askFor(0), 1);
    }
    QCOMPARE(askFor(-1), 1);
    QCOMPARE(askFor(std::numeric_limits<qint64>::min()), 1);
}

void ZQAlertEndTest::theLongestIntervalWaits()
{
    QTimer::singleShot(300, this, [] { test::click(*test::visibleAlert(), "alternateButton"); });
    QCOMPARE(askFor(std::numeric_limits<qint64>::max()), 0);
}

void ZQAlertEndTest::aDestroyedParentEndsTheWaitAsEscDoes()
{
    auto window = std::make_unique<QWidget>();
    const test::AlertWatcher watcher([&](AlertPanel & /*alert*/) { window.reset(); });
    QCOMPARE(ask(window.get()), 0);
    window = std::make_unique<QWidget>();
    QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, {}, window.get()), 1);
    QCOMPARE(watcher.count(), 2);
}

void ZQAlertEndTest::aDestroyedParentEndsTheWaitOfAWorker()
{
    auto window = std::make_unique<QWidget>();
    const test::AlertWatcher watcher([&](AlertPanel & /*alert*/) { window.reset(); });
    QCOMPARE(test::onWorker([&] { return ask(window.get()); }), 0);
    QCOMPARE(watcher.count(), 1);
}

void ZQAlertEndTest::quittingEndsTheWaitAsEscDoes()
{
    qint64 code = -2;
    QTimer::singleShot(0, this, [&] { code = ask(nullptr); });
    const test::AlertWatcher watcher([](AlertPanel & /*alert*/) { QCoreApplication::quit(); });
    QCoreApplication::exec();
    QCOMPARE(code, 0);
}

void ZQAlertEndTest::quittingEndsNestedWaits()
{
    qint64 outer = -2;
    qint64 inner = -2;
    QTimer::singleShot(0, this, [&] { outer = ask(nullptr); });
    int depth = 0;
    const test::AlertWatcher watcher([&](AlertPanel & /*alert*/) {
        if (++depth == 1) {
            QTimer::singleShot(0, this, [&] { inner = ask(nullptr); });
        } else {
            QCoreApplication::quit();
        }
    });
    QCoreApplication::exec();
    QCOMPARE(depth, 2);
    QCOMPARE(outer, 0);
    QCOMPARE(inner, 0);
}

void ZQAlertEndTest::quittingEndsTheWaitOfAWorker()
{
    std::atomic<qint64> code = -2;
    std::thread worker([&] { code = ask(nullptr); });
    const test::AlertWatcher watcher([](AlertPanel & /*alert*/) { QCoreApplication::quit(); });
    QCoreApplication::exec();
    QTRY_COMPARE(code.load(), qint64(0));
    worker.join();
}

void ZQAlertEndTest::endingAWorkerEndsItsWait()
{
    QWidget window;
    qint64 shown = -2;
    qint64 late = -2;
    {
        platform::WorkerThreads workers;
        workers.start([&] {
            shown = ask(&window);
            late = ask(&window); // begun when the worker is to end already
        });
        QTRY_VERIFY(test::visibleAlert() != nullptr);
    }
    QCOMPARE(shown, 0);
    QCOMPARE(late, 0);
}

// The rest needs processes of its own, see run().
void ZQAlertEndTest::aProcessDoesNotWaitForItsTimers()
{
    QCOMPARE(QProcess::execute(
                 QCoreApplication::applicationFilePath(),
                 {QStringLiteral("ZQAlertEndTest"), QStringLiteral("answeredTimedAlerts")}),
             0);
}

void ZQAlertEndTest::aProcessQuitsWhileAnAlertBlocks()
{
    for (const auto &role :
         {QStringLiteral("quitWhileBlocking"), QStringLiteral("quitWhileAWorkerWaits")}) {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(),
                      {QStringLiteral("ZQAlertEndTest"), role});
        QVERIFY2(process.waitForFinished(60000), qPrintable(role));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
    }
}

void ZQAlertEndTest::aProcessWithoutWindowsLogsTheAlert()
{
    QCOMPARE(
        QProcess::execute(QCoreApplication::applicationFilePath(),
                          {QStringLiteral("ZQAlertEndTest"), QStringLiteral("withoutWindows")}),
        0);
}

namespace {

// The exit code is 0 where the rule holds.
int play(const QByteArray &role, int count, char **arguments)
{
    if (role == "withoutWindows") {
        const QCoreApplication application(count, arguments);
        ZQLog::createNewLog();
        const auto code = ask(nullptr);
        ZQLog::finishWriting();
        QFile log(ZQLog::availableLogs().value(0));
        const auto logged = log.open(QIODevice::ReadOnly) &&
                            log.readAll().contains("Alert error: no window can show \"Headline\"");
        return code == 0 && logged ? 0 : 1;
    }
    const QApplication application(count, arguments);
    if (role == "answeredTimedAlerts") {
        const test::AlertWatcher watcher(
            [](AlertPanel &alert) { test::click(alert, "alternateButton"); });
        return askFor(3600) == 0 && test::onWorker([] { return askFor(3600); }) == 0 ? 0 : 1;
    }
    const test::AlertWatcher watcher([](AlertPanel & /*alert*/) { QCoreApplication::quit(); });
    if (role == "quitWhileBlocking") {
        qint64 code = -2;
        QTimer::singleShot(0, &application, [&] { code = ask(nullptr); });
        return QCoreApplication::exec() == 0 && code == 0 ? 0 : 1;
    }
    if (role == "quitWhileAWorkerWaits") {
        std::thread([] { ask(nullptr); }).detach();
        return QCoreApplication::exec();
    }
    return 2;
}

} // namespace

static int run(int count, char **arguments)
{
    const QByteArray role = count == 2 ? arguments[1] : "";
    if (role.startsWith("quit") || role == "answeredTimedAlerts" || role == "withoutWindows") {
        return play(role, count, arguments);
    }
    QApplication application(count, arguments);
    ZQAlertEndTest test;
    return QTest::qExec(&test, count, arguments);
}

TEST_FUNCTION(ZQAlertEndTest, run)
#include "ZQAlertEndTest.moc"
