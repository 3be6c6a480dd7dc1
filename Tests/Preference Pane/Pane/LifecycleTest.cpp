// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Preference Pane/Pane/ProgressSpinner.h"
#include "Shared/Log/ZQLog.h"
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/CommandRecorder.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/StandardOutputCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QTest>

#include <sys/resource.h>

#include <ctime>
#include <stdexcept>

using namespace std::chrono_literals;
using test::CommandRecorder;

namespace {

QString inBrackets(const QString &text)
{
    return QLatin1Char('[') + text + QLatin1Char(']');
}

QString job()
{
    return Ostrel_Preference_Pane::jobFilePath();
}

QStringList runsOf(const QString &command)
{
    return CommandRecorder::runs().filter(command + QLatin1Char(' '));
}

double processorSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

// Every text of the status line that any event of the main thread finds there: a look now and then
// would miss those that give way at once.
class ShownStatuses : public QObject {
public:
    explicit ShownStatuses(const PaneFixture &fixture) : m_fixture(fixture)
    {
        look();
        QCoreApplication::instance()->installEventFilter(this);
    }
    // In order, with arrows between them.
    QString words() const { return m_words.join(QStringLiteral(" > ")); }
    bool eventFilter(QObject * /*watched*/, QEvent * /*event*/) override
    {
        look();
        return false;
    }

private:
    void look()
    {
        const auto text = m_fixture.status().mid(QStringLiteral("Status: ").size());
        if (m_words.isEmpty() || m_words.last() != text) {
            m_words << text;
        }
    }

    const PaneFixture &m_fixture;
    QStringList m_words;
};

// What a pane's host would see, and what only its own class may do.
class OpenPane : public Ostrel_Preference_Pane {
public:
    using Ostrel_Preference_Pane::Ostrel_Preference_Pane;
    using Ostrel_Preference_Pane::runClientOperation;
};

} // namespace

// Starting, stopping and reloading the listener, as root, who needs no authorisation. The commands
// that are run are recorded; those of the user's session are tested in a session.
class LifecycleTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void aStartInstallsAndLoadsTheJob();
    void aStartShowsItsSteps();
    void aListenerAlreadyRunningIsKilledByNameBeforeTheJobIsLoaded();
    void aListenerThatIsNotUpIsStartedByHand();
    void aListenerThatIsUpIsNotStartedByHand();
    void theWaitForTheListenerSpins();
    void aListenerThatNeverReportsIsTimedOutAndStopped();
    void aStopAnnouncesItselfAndRemovesTheJob();
    void aStopTakesAtLeastTwoSecondsPlusTheUnload();
    void withoutAPathOfItsOwnTheStartEndsInAnAlert();
    void anExceptionIsLoggedAndTheClosingStepsStillRun();
    void anotherExceptionRunsTheClosingStepsAndIsPassedOn();
    void anUpdatedPaneReloadsTheJobExactlyOnce();
    void withoutAnOlderVersionOnRecordNothingIsReloaded();
    void withoutAJobFileNothingIsReloaded();
    void theVersionIsComparedAsText();
    void aSwitchMovedDuringTheReloadStartsNothing();
    void closingDuringAStartLeavesAWholeJob();
    void closingWhileWaitingForTheListenerIsQuick();

private:
    void add(const QString &path, const QString &shell = {})
    {
        m_recorders.push_back(std::make_unique<CommandRecorder>(path, shell));
    }
    static void installListener(PaneFixture &fixture, const QByteArray &script);
    static void toggle(PaneFixture &fixture)
    {
        QTest::mouseClick(&fixture.masterSwitch(), Qt::LeftButton);
    }

    std::vector<std::unique_ptr<CommandRecorder>> m_recorders;
};

void LifecycleTest::init()
{
    CommandRecorder::forget();
    add(QStringLiteral("/usr/bin/launchctl"));
    add(QStringLiteral("/usr/bin/killall"));
    add(QStringLiteral("/usr/sbin/chown"));
    add(QStringLiteral("/usr/bin/chmod"), QStringLiteral("exec /opt/bin/chmod \"$@\""));
}

void LifecycleTest::cleanup()
{
    m_recorders.clear();
}

// The program in the bundle, with which a test sees that it was started.
void LifecycleTest::installListener(PaneFixture &fixture, const QByteArray &script)
{
    const auto folder = fixture.bundlePath() + QStringLiteral("/Contents/MacOS");
    QVERIFY(QDir().mkpath(folder));
    QFile file(folder + QStringLiteral("/OstrelListener"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/opt/bin/sh\n" + script);
    file.setPermissions(QFile::Permissions(0x7755));
}

void LifecycleTest::aStartInstallsAndLoadsTheJob()
{
    PaneFixture fixture(200ms);
    fixture.open();
    fixture.waitUntilLoaded();
    toggle(fixture);
    QVERIFY(!fixture.masterSwitch().enabled());
    QTRY_VERIFY(fixture.pane().isProcessing());
    QTRY_VERIFY(fixture.control<ProgressSpinner>("statusSpinner")->isAnimating());
    fixture.waitUntilIdle();

    const auto program = fixture.bundlePath() + QStringLiteral("/Contents/MacOS/OstrelListener");
    const QVariantMap expected{
        {QStringLiteral("Label"), QStringLiteral("com.corvane.OstrelListener")},
        {QStringLiteral("Program"), program},
        {QStringLiteral("WorkingDirectory"),
         fixture.bundlePath() + QStringLiteral("/Contents/MacOS")},
        {QStringLiteral("RunAtLoad"), true},
        {QStringLiteral("KeepAlive"), QVariantMap{{QStringLiteral("SuccessfulExit"), false}}}};
    QCOMPARE(platform::dictionaryFromFile(job()).value_or(QVariantMap()), expected);
    auto runs = CommandRecorder::runs();
    const auto watch = runs.filter(QStringLiteral("launchctl [list] ")); // whether it failed
    for (const auto &run : watch) {
        runs.removeAll(run);
    }
    QCOMPARE(runs.takeFirst(), QStringLiteral("killall [OstrelListener]"));
    // Run side by side, as the privileged commands are.
    const auto owner = QStringLiteral("chown [root:wheel] ") + inBrackets(job());
    const auto mode = QStringLiteral("chmod [644] ") + inBrackets(job());
    QVERIFY(runs.removeOne(owner) && runs.removeOne(mode));
    QCOMPARE(runs, (QStringList{QStringLiteral("launchctl [unload] ") + inBrackets(job()),
                                QStringLiteral("launchctl [load] ") + inBrackets(job())}));
    QVERIFY(fixture.masterSwitch().isOn());
    QVERIFY(fixture.masterSwitch().enabled());
    QTRY_VERIFY(!fixture.control<ProgressSpinner>("statusSpinner")->isAnimating());
}

void LifecycleTest::aStartShowsItsSteps()
{
    PaneFixture fixture(1s); // no poll may come in between
    fixture.open();
    fixture.waitUntilLoaded();
    const ShownStatuses statuses(fixture);
    toggle(fixture);
    QTRY_COMPARE_WITH_TIMEOUT(fixture.status(), QStringLiteral("Status: Launching service..."),
                              20000);
    QTRY_COMPARE(statuses.words(),
                 QStringLiteral("Not loaded > Creating job... > Launching service..."));
    fixture.waitUntilIdle();
    QVERIFY(fixture.masterSwitch().isOn());
}

void LifecycleTest::aListenerAlreadyRunningIsKilledByNameBeforeTheJobIsLoaded()
{
    m_recorders.clear();
    add(QStringLiteral("/usr/bin/launchctl"));
    add(QStringLiteral("/usr/sbin/chown"));
    PaneFixture fixture(200ms);
    fixture.runProcess(QStringLiteral("OstrelListener"));
    QTRY_VERIFY(Ostrel_Preference_Pane::isProcessRunning(QStringLiteral("OstrelListener")));
    fixture.open();
    fixture.waitUntilLoaded();
    toggle(fixture); // the real killall
    fixture.waitUntilIdle();
    QVERIFY(!Ostrel_Preference_Pane::isProcessRunning(QStringLiteral("OstrelListener")));
}

void LifecycleTest::aListenerThatIsNotUpIsStartedByHand()
{
    test::ConsoleCapture console;
    PaneFixture fixture(100ms);
    QFile::remove(QStringLiteral("/tmp/started"));
    installListener(fixture, "echo \"$# arguments\" >/tmp/started\n");
    fixture.open();
    fixture.waitUntilLoaded();
    QElapsedTimer time;
    toggle(fixture);
    QTRY_COMPARE_WITH_TIMEOUT(fixture.status(), QStringLiteral("Status: Launching service..."),
                              20000);
    time.start();
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(QStringLiteral("/tmp/started")), 20000);
    QVERIFY2(time.elapsed() >= 1400, qPrintable(QString::number(time.elapsed())));
    QCOMPARE(console.lines().count(QStringLiteral("Launching client manually")), 1);
    QTRY_COMPARE(platform::contentsOfFile(QStringLiteral("/tmp/started"), 1000).value_or(""),
                 QByteArray("0 arguments\n"));
}

void LifecycleTest::aListenerThatIsUpIsNotStartedByHand()
{
    test::ConsoleCapture console;
    PaneFixture fixture(100ms);
    QFile::remove(QStringLiteral("/tmp/started"));
    installListener(fixture, "echo >/tmp/started\n");
    fixture.runProcess(QStringLiteral("OstrelListener"));
    fixture.open();
    fixture.waitUntilLoaded();
    toggle(fixture);
    fixture.waitUntilIdle();
    QTest::qWait(2000);
    QCOMPARE(console.lines().count(QStringLiteral("Launching client manually")), 0);
    QVERIFY(!QFile::exists(QStringLiteral("/tmp/started")));
}

void LifecycleTest::theWaitForTheListenerSpins()
{
    PaneFixture fixture(200ms);
    fixture.open();
    fixture.waitUntilLoaded();
    toggle(fixture);
    fixture.waitUntilIdle();
    const auto before = processorSeconds();
    QTest::qWait(1500); // within the 3 seconds of the wait
    // A wait that sleeps costs a few milliseconds; a busy machine leaves a spinning one less than
    // all of its time.
    QVERIFY2(processorSeconds() - before > 0.3,
             qPrintable(QString::number(processorSeconds() - before)));
}

void LifecycleTest::aListenerThatNeverReportsIsTimedOutAndStopped()
{
    // Whole seconds: on a busy machine shorter ones would end, and be told of, during the stop too.
    PaneFixture fixture;
    installListener(fixture, "exit 0\n");
    fixture.open();
    fixture.waitUntilLoaded();
    const ShownStatuses statuses(fixture);
    toggle(fixture);
    QTRY_VERIFY_WITH_TIMEOUT(statuses.words().contains(QStringLiteral("Unloading job...")), 90000);
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(job()), 90000);
    // The hand-start's own refresh comes with the time-out. Where it falls into the stop it moves
    // the switch, and the stop is repeated.
    const auto stop = QStringLiteral(" > Disconnecting... > Unloading job... > Not loaded");
    const auto once = QStringLiteral("Not loaded > Creating job... > Launching service... > "
                                     "Timed out > Not loaded") +
                      stop;
    QTRY_VERIFY2_WITH_TIMEOUT(!fixture.pane().isProcessing() &&
                                  (statuses.words() == once || statuses.words() == once + stop),
                              qPrintable(statuses.words()), 90000);
    QVERIFY(!fixture.masterSwitch().isOn());
    QCOMPARE(fixture.status(), QStringLiteral("Status: Not loaded"));
}

void LifecycleTest::aStopAnnouncesItselfAndRemovesTheJob()
{
    PaneFixture fixture(300ms);
    PaneFixture::installJob();
    fixture.runProcess(QStringLiteral("OstrelListener"));
    fixture.open();
    fixture.waitUntilLoaded();
    QVERIFY(fixture.masterSwitch().isOn());
    QStringList announced;
    const platform::DistributedObserver observer(
        QStringLiteral("ZQOstrelClientDisconnect"),
        [&](const platform::Notification &notification) {
            announced << notification.name + QString::number(notification.userInfo.size()) +
                             fixture.status();
        });
    QTest::qWait(50);
    const ShownStatuses statuses(fixture);
    toggle(fixture);
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(job()), 30000);
    fixture.waitUntilIdle();
    QCOMPARE(announced,
             QStringList{QStringLiteral("ZQOstrelClientDisconnect0Status: Disconnecting...")});
    QTRY_COMPARE(statuses.words(),
                 QStringLiteral("Running > Disconnecting... > Unloading job... > Not loaded"));
    QCOMPARE(CommandRecorder::runs(),
             (QStringList{QStringLiteral("launchctl [unload] ") + inBrackets(job()),
                          QStringLiteral("launchctl [remove] [com.corvane.OstrelListener]"),
                          QStringLiteral("killall [OstrelListener]")}));
    QVERIFY(!fixture.masterSwitch().isOn());
}

void LifecycleTest::aStopTakesAtLeastTwoSecondsPlusTheUnload()
{
    m_recorders.clear();
    add(QStringLiteral("/usr/bin/launchctl"), QStringLiteral("sleep 0.5"));
    add(QStringLiteral("/usr/bin/killall"));
    PaneFixture fixture(1s);
    PaneFixture::installJob();
    fixture.runProcess(QStringLiteral("OstrelListener"));
    fixture.open();
    fixture.waitUntilLoaded();
    QElapsedTimer time;
    time.start();
    toggle(fixture);
    QTRY_VERIFY_WITH_TIMEOUT(!fixture.masterSwitch().isOn() && fixture.masterSwitch().enabled(),
                             30000);
    QVERIFY2(time.elapsed() >= 3000, qPrintable(QString::number(time.elapsed())));
}

void LifecycleTest::withoutAPathOfItsOwnTheStartEndsInAnAlert()
{
    test::ConsoleCapture console;
    const PaneFixture cleaner(100ms);
    QMainWindow window;
    OpenPane pane{platform::Bundle(QString())};
    window.setCentralWidget(pane.loadMainView(&window));
    window.show();
    QTRY_VERIFY(!pane.isLoading());
    QStringList texts;
    const test::AlertWatcher watcher([&](platform::AlertPanel &alert) {
        texts << alert.description().messageText << alert.description().informativeText;
        test::click(alert, "defaultButton");
    });
    QTest::mouseClick(window.findChild<ZQSwitch *>(QStringLiteral("masterSwitch")), Qt::LeftButton);
    QTRY_COMPARE(texts, (QStringList{QStringLiteral("Error - unable to determine application path"),
                                     QStringLiteral("Please report this error to Corvane.")}));
    QTRY_VERIFY(!pane.isProcessing());
    QVERIFY(console.lines().contains(
        QStringLiteral("Error - unable to determine application path. Please report this error to "
                       "Corvane.")));
    QVERIFY(!QFile::exists(job()));
}

void LifecycleTest::anExceptionIsLoggedAndTheClosingStepsStillRun()
{
    const PaneFixture cleaner(60s);
    QMainWindow window;
    OpenPane pane{platform::Bundle(QStringLiteral("/nonexistent"))};
    window.setCentralWidget(pane.loadMainView(&window));
    pane.disableInterface();
    auto wasProcessing = false;
    const auto output = test::outputOf([&] {
        pane.runClientOperation("-[Ostrel_Preference_Pane setupClient]", [&] {
            wasProcessing = pane.isProcessing();
            throw platform::Exception(QStringLiteral("SomeException"), QStringLiteral("no reason"));
        });
    });
    QVERIFY(wasProcessing);
    QVERIFY(!pane.isProcessing());
    auto *control = window.findChild<ZQSwitch *>(QStringLiteral("masterSwitch"));
    QVERIFY(control->enabled());
    QVERIFY(output.contains(QStringLiteral(
        "Exception in -[Ostrel_Preference_Pane setupClient]. SomeException - no reason.")));
}

void LifecycleTest::anotherExceptionRunsTheClosingStepsAndIsPassedOn()
{
    const PaneFixture cleaner(60s);
    QMainWindow window;
    OpenPane pane{platform::Bundle(QStringLiteral("/nonexistent"))};
    window.setCentralWidget(pane.loadMainView(&window));
    QVERIFY_EXCEPTION_THROWN(
        pane.runClientOperation("x", [] { throw std::runtime_error("another"); }),
        std::runtime_error);
    QVERIFY(!pane.isProcessing());
}

void LifecycleTest::anUpdatedPaneReloadsTheJobExactlyOnce()
{
    PaneFixture fixture(100ms);
    PaneFixture::installJob();
    PaneFixture::writePreferences(
        {{QStringLiteral("lastRunVersion"), QStringLiteral("6")}, {QStringLiteral("mine"), 1}});
    int announced = 0;
    const platform::DistributedObserver observer(
        QStringLiteral("ZQOstrelClientDisconnect"),
        [&](const platform::Notification & /*notification*/) { ++announced; });
    QTest::qWait(50);
    fixture.open();
    fixture.waitUntilLoaded();
    const QStringList expected{QStringLiteral("launchctl [unload] ") + inBrackets(job()),
                               QStringLiteral("launchctl [load] ") + inBrackets(job())};
    QCOMPARE(CommandRecorder::runs(), expected);
    QTRY_COMPARE(announced, 1);
    QCOMPARE(PaneFixture::preferences().value(QStringLiteral("lastRunVersion")).toString(),
             QStringLiteral("7"));
    QCOMPARE(PaneFixture::preferences().value(QStringLiteral("mine")).toInt(), 1);
    fixture.close();
    fixture.open();
    fixture.waitUntilLoaded();
    QCOMPARE(CommandRecorder::runs(), expected);
}

void LifecycleTest::withoutAnOlderVersionOnRecordNothingIsReloaded()
{
    PaneFixture fixture(100ms);
    PaneFixture::installJob();
    fixture.open();
    fixture.waitUntilLoaded();
    QVERIFY(CommandRecorder::runs().isEmpty());
    QCOMPARE(PaneFixture::preferences().value(QStringLiteral("lastRunVersion")).toString(),
             QStringLiteral("7"));
}

void LifecycleTest::withoutAJobFileNothingIsReloaded()
{
    PaneFixture fixture(100ms);
    PaneFixture::writePreferences({{QStringLiteral("lastRunVersion"), QStringLiteral("6")}});
    fixture.open();
    fixture.waitUntilLoaded();
    QVERIFY(CommandRecorder::runs().isEmpty());
    QCOMPARE(PaneFixture::preferences().value(QStringLiteral("lastRunVersion")).toString(),
             QStringLiteral("7"));
}

void LifecycleTest::theVersionIsComparedAsText()
{
    PaneFixture fixture(100ms);
    PaneFixture::installJob();
    PaneFixture::writePreferences({{QStringLiteral("lastRunVersion"), QStringLiteral("7.0")}});
    fixture.open();
    fixture.waitUntilLoaded();
    QCOMPARE(runsOf(QStringLiteral("launchctl")).size(), 2);
}

void LifecycleTest::aSwitchMovedDuringTheReloadStartsNothing()
{
    m_recorders.clear();
    add(QStringLiteral("/usr/bin/launchctl"), QStringLiteral("sleep 1"));
    PaneFixture fixture(100ms);
    PaneFixture::installJob();
    PaneFixture::writePreferences({{QStringLiteral("lastRunVersion"), QStringLiteral("6")}});
    fixture.open();
    QTRY_COMPARE(runsOf(QStringLiteral("launchctl")).size(), 1);
    QVERIFY(fixture.pane().isLoading());
    toggle(fixture);
    QVERIFY(!fixture.pane().isProcessing());
    fixture.waitUntilLoaded();
    QCOMPARE(runsOf(QStringLiteral("launchctl")).size(), 2);
    QVERIFY(QFile::exists(job()));
}

void LifecycleTest::closingDuringAStartLeavesAWholeJob()
{
    PaneFixture fixture(100ms);
    fixture.open();
    fixture.waitUntilLoaded();
    toggle(fixture);
    QTRY_COMPARE_WITH_TIMEOUT(fixture.status(), QStringLiteral("Status: Creating job..."), 20000);
    fixture.close();
    QCOMPARE(platform::dictionaryFromFile(job()).value_or(QVariantMap()).size(), 5);
    QCOMPARE(runsOf(QStringLiteral("launchctl [unload]")).size(), 1);
    QCOMPARE(runsOf(QStringLiteral("launchctl [load]")).size(), 1);
}

void LifecycleTest::closingWhileWaitingForTheListenerIsQuick()
{
    PaneFixture fixture(1s);
    fixture.open();
    fixture.waitUntilLoaded();
    toggle(fixture);
    QTRY_COMPARE_WITH_TIMEOUT(fixture.status(), QStringLiteral("Status: Launching service..."),
                              20000);
    fixture.waitUntilIdle();
    QElapsedTimer time;
    time.start();
    fixture.close();
    QVERIFY2(time.elapsed() < 5000, qPrintable(QString::number(time.elapsed())));
}

TEST_CLASS(LifecycleTest, QApplication)
#include "LifecycleTest.moc"
