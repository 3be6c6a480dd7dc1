// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/CommandRecorder.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QTest>

using namespace std::chrono_literals;

// The time-out of the status channel, with shortened seconds.
class TimeOutTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aSilentListenerEndsAsNotLoadedWithTheSwitchOff();
    void aListenerThatFallsSilentLaterIsNoticed();
    void aSecondArmingReplacesTheFirst();
    void anyStatusCancelsTheTimeOut();
    void aStartsTimeOutIsReplacedByTheNextPoll();
    void withoutAnArmingNothingFires();
    void anArmingJustBeforeTheLastIsDueReplacesIt();
    void aSlowProfilerDoesNotUseUpTheFirstTimeOut();
};

namespace {
const QString notLoaded = QStringLiteral("Status: Not loaded");
const QString runningLine = QStringLiteral("Status: Running");

void say(PaneFixture &fixture, const QString &word)
{
    fixture.pane().updateStatus({QString(), {}, {{QStringLiteral("status"), word}}});
}
} // namespace

void TimeOutTest::aSilentListenerEndsAsNotLoadedWithTheSwitchOff()
{
    PaneFixture fixture(200ms);
    PaneFixture::installJob();
    fixture.runProcess(QStringLiteral("OstrelListener"));
    fixture.open();
    QCOMPARE(fixture.status(), runningLine);
    QVERIFY(fixture.masterSwitch().isOn());
    QTRY_COMPARE_WITH_TIMEOUT(fixture.status(), notLoaded, 20000);
    fixture.waitUntilIdle();
    QVERIFY(!fixture.masterSwitch().isOn());
}

void TimeOutTest::aListenerThatFallsSilentLaterIsNoticed()
{
    PaneFixture fixture(200ms);
    PaneFixture::installJob();
    fixture.open();
    fixture.waitUntilLoaded();
    // Answers for two polls, then no more.
    QElapsedTimer time;
    time.start();
    while (time.elapsed() < 4500) {
        say(fixture, QStringLiteral("Running"));
        QTest::qWait(40);
    }
    QCOMPARE(fixture.status(), runningLine);
    QTRY_COMPARE_WITH_TIMEOUT(fixture.status(), notLoaded, 20000);
}

void TimeOutTest::aSecondArmingReplacesTheFirst()
{
    PaneFixture fixture(1s);
    PaneFixture::installJob();
    fixture.open();
    say(fixture, QStringLiteral("Running"));
    fixture.pane().scheduleTimeOut(1s);
    fixture.pane().scheduleTimeOut(600s);
    QTest::qWait(2000);
    QCOMPARE(fixture.status(), runningLine);
    fixture.pane().scheduleTimeOut(600s);
    fixture.pane().scheduleTimeOut(1s);
    QTRY_COMPARE_WITH_TIMEOUT(fixture.status(), notLoaded, 20000);
    fixture.waitUntilIdle();
    // Only one was left: a word shown now stays.
    fixture.pane().invalidateTimeOut();
    fixture.showStatusOnly(QStringLiteral("Marked"));
    QTest::qWait(1500);
    QCOMPARE(fixture.status(), QStringLiteral("Status: Marked"));
}

void TimeOutTest::anyStatusCancelsTheTimeOut()
{
    PaneFixture fixture(1s);
    PaneFixture::installJob();
    fixture.open();
    for (const auto &word : {QStringLiteral("Running"), QStringLiteral("Relaunching...")}) {
        fixture.pane().scheduleTimeOut(1s);
        say(fixture, word);
        QTest::qWait(1500);
        QCOMPARE(fixture.status(), QStringLiteral("Status: ") + word);
    }
}

void TimeOutTest::aStartsTimeOutIsReplacedByTheNextPoll()
{
    PaneFixture fixture(60s);
    PaneFixture::installJob();
    fixture.open();
    say(fixture, QStringLiteral("Running"));
    fixture.pane().scheduleTimeOut(0s); // the start's is due
    fixture.pane().fetchCurrentStatus();
    QCoreApplication::sendPostedEvents();
    QTest::qWait(100);
    QCOMPARE(fixture.status(), runningLine);
}

void TimeOutTest::withoutAnArmingNothingFires()
{
    PaneFixture fixture(60s);
    PaneFixture::installJob();
    fixture.open();
    QTest::qWait(50);
    fixture.pane().invalidateTimeOut();
    fixture.showStatusOnly(QStringLiteral("Marked"));
    QTest::qWait(200);
    QCOMPARE(fixture.status(), QStringLiteral("Status: Marked"));
}

void TimeOutTest::anArmingJustBeforeTheLastIsDueReplacesIt()
{
    PaneFixture fixture(60s);
    PaneFixture::installJob();
    fixture.open();
    say(fixture, QStringLiteral("Running"));
    fixture.pane().scheduleTimeOut(0s);
    fixture.pane().scheduleTimeOut(10s);
    QTest::qWait(100);
    QCOMPARE(fixture.status(), runningLine);
}

void TimeOutTest::aSlowProfilerDoesNotUseUpTheFirstTimeOut()
{
    // The opening waits for this.
    const test::CommandRecorder profiler(QStringLiteral("/usr/sbin/system_profiler"),
                                         QStringLiteral("exec /opt/bin/sleep 0.5"));
    const PaneFixture cleaner(60s);
    PaneFixture::installJob();
    QMainWindow window;
    Ostrel_Preference_Pane pane{platform::Bundle(cleaner.bundlePath())};
    auto *view = pane.loadMainView(&window);
    auto *line = view->findChild<QLabel *>(QStringLiteral("statusLabel"));
    line->setText(runningLine);
    // One that is due is replaced by what the opening armed, as that comes on a later pass only.
    pane.scheduleTimeOut(0s);
    QCoreApplication::sendPostedEvents();
    QTest::qWait(100);
    QCOMPARE(line->text(), runningLine);
}

TEST_CLASS(TimeOutTest, QApplication)
#include "TimeOutTest.moc"
