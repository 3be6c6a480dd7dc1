// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QTest>

// The listener's words over a real session bus, sent by gdbus, and the pane's own notifications as
// a listener hears them.
class StatusChannelTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aWordFromTheBusIsShownAndTurnsTheSwitchOn();
    void anUnknownWordCountsAsUpWithAJobFile();
    void disconnectedTurnsTheSwitchOffAndEndsAsNotLoaded();
    void relaunchingKeepsLineAndSwitchUntilAnotherWordArrives();
    void aWordDuringAStartOrStopChangesOnlyTheLine();
    void aStatusWithoutTheEntryOnlyCancelsTheTimeOut();
    void hostileUserInformationIsSurvived_data();
    void hostileUserInformationIsSurvived();
    void aMillionCharactersDoNotWidenTheWindow();
    void wordsThatLookLikeMarkupOrHoldLineBreaksStayOneLineOfText();
    void aStatusOfAnotherNameOrAnotherPathIsIgnored();
    void thePaneAsksForTheStatusWhenItOpensAndAtEveryPoll();
    void changedNetworkSettingsAloneAskForARelaunch();
    void theRelaunchIsAskedForAfterTheSave();
    void afterThePaneIsGoneAStatusChangesNothing();
};

namespace {

// What gdbus saw on the bus so far.
class BusMonitor {
public:
    BusMonitor()
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral("dbus-monitor"),
                        {QStringLiteral("--session"),
                         QStringLiteral("interface='com.corvane.DistributedNotifications'")});
        if (!m_process.waitForStarted()) {
            qFatal("dbus-monitor does not start");
        }
        // It monitors from its first line on.
        while (m_text.isEmpty() && m_process.waitForReadyRead()) {
            m_text += m_process.readAll();
        }
    }
    ~BusMonitor()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    BusMonitor(const BusMonitor &) = delete;
    BusMonitor &operator=(const BusMonitor &) = delete;

    int count(const QByteArray &name)
    {
        m_text += m_process.readAll();
        return static_cast<int>(m_text.count("string \"" + name + "\""));
    }

private:
    QProcess m_process;
    QByteArray m_text;
};

} // namespace

void StatusChannelTest::aWordFromTheBusIsShownAndTurnsTheSwitchOn()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::installJob();
    fixture.open();
    QVERIFY(!fixture.masterSwitch().isOn());
    PaneFixture::emitStatus("Running");
    QTRY_COMPARE(fixture.status(), QStringLiteral("Status: Running"));
    QVERIFY(fixture.masterSwitch().isOn());
}

void StatusChannelTest::anUnknownWordCountsAsUpWithAJobFile()
{
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    PaneFixture::emitStatus("Connected to Ann's tablet");
    QTest::qWait(200);
    QCOMPARE(fixture.status(), QStringLiteral("Status: Not loaded"));
    PaneFixture::installJob();
    PaneFixture::emitStatus("Connected to Ann");
    QTRY_COMPARE(fixture.status(), QStringLiteral("Status: Connected to Ann"));
    QVERIFY(fixture.masterSwitch().isOn());
}

void StatusChannelTest::disconnectedTurnsTheSwitchOffAndEndsAsNotLoaded()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::installJob();
    fixture.open();
    PaneFixture::emitStatus("Running");
    QTRY_VERIFY(fixture.masterSwitch().isOn());
    PaneFixture::emitStatus("Disconnected");
    QTRY_COMPARE(fixture.status(), QStringLiteral("Status: Not loaded"));
    QVERIFY(!fixture.masterSwitch().isOn());
}

void StatusChannelTest::relaunchingKeepsLineAndSwitchUntilAnotherWordArrives()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::installJob();
    fixture.open();
    PaneFixture::emitStatus("Running");
    QTRY_VERIFY(fixture.masterSwitch().isOn());
    PaneFixture::emitStatus("Relaunching...");
    QTRY_COMPARE(fixture.status(), QStringLiteral("Status: Relaunching..."));
    QTest::qWait(100);
    QCOMPARE(fixture.status(), QStringLiteral("Status: Relaunching..."));
    QVERIFY(fixture.masterSwitch().isOn());
    PaneFixture::emitStatus("Running");
    QTRY_COMPARE(fixture.status(), QStringLiteral("Status: Running"));
}

void StatusChannelTest::aWordDuringAStartOrStopChangesOnlyTheLine()
{
    class BusyPane : public Ostrel_Preference_Pane {
    public:
        using Ostrel_Preference_Pane::Ostrel_Preference_Pane;
        using Ostrel_Preference_Pane::setProcessing;
    };
    const PaneFixture cleaner(std::chrono::seconds(60));
    PaneFixture::installJob();
    QMainWindow window;
    BusyPane pane{platform::Bundle(QStringLiteral("/nonexistent"))};
    auto *view = pane.loadMainView(&window);
    auto *line = view->findChild<QLabel *>(QStringLiteral("statusLabel"));
    auto *masterSwitch = view->findChild<ZQSwitch *>(QStringLiteral("masterSwitch"));
    pane.setProcessing(true);
    pane.disableInterface();
    for (const char *word : {"Running", "Disconnected", "Timed out"}) {
        PaneFixture::emitStatus(word);
        QTRY_COMPARE(line->text(), QStringLiteral("Status: ") + QLatin1String(word));
        QVERIFY(!masterSwitch->isOn());
        QVERIFY(!masterSwitch->enabled());
    }
    pane.setProcessing(false);
}

void StatusChannelTest::aStatusWithoutTheEntryOnlyCancelsTheTimeOut()
{
    // Ten short seconds pass without "Timed out", since the entry-less notifications keep coming.
    PaneFixture fixture(std::chrono::milliseconds(300));
    PaneFixture::installJob();
    fixture.open();
    fixture.waitUntilLoaded();
    fixture.showStatusOnly(QStringLiteral("Marked"));
    QElapsedTimer time;
    time.start();
    while (time.elapsed() < 7000) {
        fixture.pane().updateStatus({QString(), {}, {{QStringLiteral("other"), 1}}});
        QTest::qWait(50);
    }
    QCOMPARE(fixture.status(), QStringLiteral("Status: Marked"));
}

void StatusChannelTest::hostileUserInformationIsSurvived_data()
{
    QTest::addColumn<QByteArray>("variantText");
    QTest::newRow("a number") << QByteArray("{'status': <5>}");
    QTest::newRow("an array") << QByteArray("{'status': <['Running']>}");
    QTest::newRow("a nested variant") << QByteArray("{'status': <<<5>>>}");
    QTest::newRow("a nested dictionary") << QByteArray("{'status': <{'status': <'Running'>}>}");
    QTest::newRow("a tuple") << QByteArray("{'status': <('Running', 1)>}");
    QTest::newRow("bytes") << QByteArray("{'status': <b'Running'>}");
    QTest::newRow("a dictionary of texts") << QByteArray("@a{ss} {'status': 'Running'}");
    QTest::newRow("a text instead") << QByteArray("'status'");
    QTest::newRow("an array of dictionaries") << QByteArray("[{'status': <'Running'>}]");
    QTest::newRow("an empty dictionary") << QByteArray("@a{sv} {}");
    QTest::newRow("another key") << QByteArray("{'Status': <'Running'>}");
}

void StatusChannelTest::hostileUserInformationIsSurvived()
{
    QFETCH(QByteArray, variantText);
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::installJob();
    fixture.open();
    const int width = fixture.window().width();
    PaneFixture::emitUserInfo(variantText);
    PaneFixture::emitStatus("Alive");
    QTRY_COMPARE(fixture.status(), QStringLiteral("Status: Alive"));
    QCOMPARE(fixture.window().width(), width);
}

void StatusChannelTest::aMillionCharactersDoNotWidenTheWindow()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::installJob();
    fixture.open();
    const QSize size = fixture.window().size();
    const QString word(1000000, QLatin1Char('W'));
    platform::postDistributedNotification(
        {QStringLiteral("ZQOstrelClientStatusUpdate"), {}, {{QStringLiteral("status"), word}}});
    QTRY_COMPARE(fixture.status(), QStringLiteral("Status: ") + word);
    QTest::qWait(50);
    QCOMPARE(fixture.window().size(), size);
    QVERIFY(fixture.window().minimumSizeHint().width() <= size.width());
    QElapsedTimer time;
    time.start();
    fixture.window().grab();
    QVERIFY(time.elapsed() < 2000);
}

void StatusChannelTest::wordsThatLookLikeMarkupOrHoldLineBreaksStayOneLineOfText()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::installJob();
    fixture.open();
    auto *label = fixture.control<QLabel>("statusLabel");
    const int height = label->height();
    for (const char *word :
         {"<b>bold</b><img src=\"/x\">", "two\\nlines", "tab\\tand\\u0007bell"}) {
        PaneFixture::emitStatus(word);
        QTRY_VERIFY(fixture.status().contains(QString::fromLatin1(word).left(3)));
        QCOMPARE(label->textFormat(), Qt::PlainText);
        QCOMPARE(label->height(), height);
    }
}

void StatusChannelTest::aStatusOfAnotherNameOrAnotherPathIsIgnored()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::installJob();
    fixture.open();
    int heard = 0;
    const platform::DistributedObserver observer(
        QStringLiteral("Last"), [&heard](const platform::Notification & /*last*/) { ++heard; });
    const auto path = QStringLiteral("/com/corvane/DistributedNotifications");
    const auto signal = QStringLiteral("com.corvane.DistributedNotifications.Posted");
    const auto name = QStringLiteral("ZQOstrelClientStatusUpdate");
    PaneFixture::emitSignal(path, signal, name + QLatin1Char('X'), "{'status': <'Name'>}");
    PaneFixture::emitSignal(path, signal, QStringLiteral("ZQOstrelClient"), "{'status': <'Part'>}");
    PaneFixture::emitSignal(path + QStringLiteral("/X"), signal, name, "{'status': <'Path'>}");
    PaneFixture::emitSignal(path, signal + QLatin1Char('X'), name, "{'status': <'Signal'>}");
    PaneFixture::emitSignal(path, QStringLiteral("com.example.Other.Posted"), name,
                            "{'status': <'Interface'>}");
    PaneFixture::emitSignal(path, signal, QStringLiteral("Last"), "@a{sv} {}");
    QTRY_COMPARE(heard, 1); // after all the others
    QCOMPARE(fixture.status(), QStringLiteral("Status: Not loaded"));
}

void StatusChannelTest::thePaneAsksForTheStatusWhenItOpensAndAtEveryPoll()
{
    BusMonitor monitor;
    PaneFixture fixture(std::chrono::milliseconds(100));
    fixture.open();
    QTRY_COMPARE(monitor.count("ZQOstrelClientCurrentStatus"), 1);
    QTRY_VERIFY_WITH_TIMEOUT(monitor.count("ZQOstrelClientCurrentStatus") >= 3, 20000);
}

void StatusChannelTest::changedNetworkSettingsAloneAskForARelaunch()
{
    BusMonitor monitor;
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    for (const char *box :
         {"autoUpdateCheck", "volFeedbackCheck", "networkDisableBonjour", "networkCustomPortCheck",
          "securityConfirmConnections", "securityAllowOneConnection"}) {
        fixture.control<QCheckBox>(box)->click();
    }
    platform::postDistributedNotification({QStringLiteral("Last"), {}, {}});
    QTRY_COMPARE(monitor.count("Last"), 1);
    QCOMPARE(monitor.count("ZQOstrelClientRelaunch"), 2);
}

void StatusChannelTest::theRelaunchIsAskedForAfterTheSave()
{
    BusMonitor monitor;
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    // The save takes as long as its alert is open.
    QFile::setPermissions(PaneFixture::preferencesFolder(), QFile::ReadOwner | QFile::ExeOwner);
    int asked = -1;
    const test::AlertWatcher watcher([&](platform::AlertPanel &alert) {
        platform::postDistributedNotification({QStringLiteral("Last"), {}, {}});
        QTRY_COMPARE(monitor.count("Last"), 1);
        asked = monitor.count("ZQOstrelClientRelaunch");
        test::click(alert, "defaultButton");
    });
    fixture.control<QCheckBox>("networkDisableBonjour")->click();
    QTRY_COMPARE(monitor.count("ZQOstrelClientRelaunch"), 1);
    QFile::setPermissions(PaneFixture::preferencesFolder(),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QCOMPARE(asked, 0);
}

void StatusChannelTest::afterThePaneIsGoneAStatusChangesNothing()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::installJob();
    fixture.open();
    int heard = 0;
    const platform::DistributedObserver observer(
        QStringLiteral("ZQOstrelClientStatusUpdate"),
        [&heard](const platform::Notification & /*status*/) { ++heard; });
    fixture.closePane();
    PaneFixture::emitStatus("Running");
    QTRY_COMPARE(heard, 1);
    QTest::qWait(0);
    QCOMPARE(fixture.status(), QStringLiteral("Status: Not loaded"));
    QVERIFY(!fixture.masterSwitch().isOn());
}

TEST_CLASS(StatusChannelTest, QApplication)
#include "StatusChannelTest.moc"
