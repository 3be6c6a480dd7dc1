// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QTest>

namespace {
// Nobody can be asked in the sandbox: each start or stop ends in a refusal.
qsizetype refusals(test::ConsoleCapture &console)
{
    return console.lines()
        .filter(QStringLiteral("Unable to ask for the administrator's authorisation"))
        .size();
}
} // namespace

// How the switch, the line and the enabling follow from the job file and the status line.
class EnabledStatusTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void decisionTable_data();
    void decisionTable();
    void aTimedOutListenerWithAJobFileEndsAsNotLoadedWithTheSwitchOff();
    void withNoASwitchChangeOnlyThePortFieldFollows();
    void thePortFieldFollowsItsCheckBoxAfterEveryRefresh();
    void theSwitchIsEnabledByEveryRefresh();
    void disableInterfaceDisablesTheSwitchAndNothingElse();
    void aMoveOfTheSwitchMadeByThePaneStartsOrStops();
    void whileLoadingAMoveOfTheSwitchStartsNothing();
    void duringAStartOrStopAMoveOfTheSwitchStartsNothing();
    void aDisabledSwitchStartsNothingEvenWhenCalledDirectly();
    void aRefusedStartEndsWithTheSwitchOffAndAStop();
};

void EnabledStatusTest::decisionTable_data()
{
    QTest::addColumn<bool>("job");
    QTest::addColumn<QString>("word");
    QTest::addColumn<bool>("switchBefore");
    QTest::addColumn<bool>("change");
    QTest::addColumn<bool>("switchAfter");
    QTest::addColumn<QString>("lineAfter");
    const QStringList downWords{QStringLiteral("Disconnected"), QStringLiteral("Timed out"),
                                QStringLiteral("Not loaded"), QStringLiteral("Relaunching...")};
    const QStringList upWords{QStringLiteral("Running"), QStringLiteral("disconnected"),
                              QStringLiteral("Not loaded "), QStringLiteral("Creating job...")};
    for (const bool before : {false, true}) {
        for (const bool change : {false, true}) {
            const auto row = [&](bool job, const QString &word, bool up) {
                const QString name =
                    QStringLiteral("%1, %2, switch %3, change %4")
                        .arg(job ? QStringLiteral("job") : QStringLiteral("no job"), word)
                        .arg(before)
                        .arg(change);
                QTest::newRow(qPrintable(name))
                    << job << word << before << change << (change ? up : before)
                    << (change && !up ? QStringLiteral("Status: Not loaded")
                                      : QStringLiteral("Status: ") + word);
            };
            for (const auto &word : downWords) {
                row(true, word, false);
                row(false, word, false);
            }
            for (const auto &word : upWords) {
                row(true, word, true);
                row(false, word, false);
            }
        }
    }
}

void EnabledStatusTest::decisionTable()
{
    QFETCH(bool, job);
    QFETCH(QString, word);
    QFETCH(bool, switchBefore);
    QFETCH(bool, change);
    // A long second: the pane stays in its loading state, so that no start or stop mixes in.
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    fixture.masterSwitch().setOn(switchBefore, Animated::No);
    fixture.showStatusOnly(word);
    if (job) {
        PaneFixture::installJob();
    }
    fixture.pane().disableInterface();
    fixture.pane().updateEnabledStatus(change ? ChangeSwitch::Yes : ChangeSwitch::No);
    QTEST(fixture.masterSwitch().isOn(), "switchAfter");
    QTEST(fixture.status(), "lineAfter");
    QVERIFY(fixture.masterSwitch().enabled());
}

void EnabledStatusTest::aTimedOutListenerWithAJobFileEndsAsNotLoadedWithTheSwitchOff()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::installJob();
    fixture.open();
    fixture.masterSwitch().setOn(true, Animated::No);
    fixture.showStatusOnly(QStringLiteral("Timed out"));
    fixture.pane().updateEnabledStatus();
    QVERIFY(!fixture.masterSwitch().isOn());
    QCOMPARE(fixture.status(), QStringLiteral("Status: Not loaded"));
}

void EnabledStatusTest::withNoASwitchChangeOnlyThePortFieldFollows()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::installJob();
    fixture.open();
    fixture.masterSwitch().setOn(true, Animated::No);
    fixture.showStatusOnly(QStringLiteral("Timed out"));
    fixture.control<QCheckBox>("networkCustomPortCheck")->setChecked(true);
    fixture.pane().updateEnabledStatus(ChangeSwitch::No);
    QVERIFY(fixture.masterSwitch().isOn());
    QCOMPARE(fixture.status(), QStringLiteral("Status: Timed out"));
    QVERIFY(fixture.control<QLineEdit>("networkCustomPortText")->isEnabled());
}

void EnabledStatusTest::thePortFieldFollowsItsCheckBoxAfterEveryRefresh()
{
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    auto *box = fixture.control<QCheckBox>("networkCustomPortCheck");
    auto *field = fixture.control<QLineEdit>("networkCustomPortText");
    field->setText(QStringLiteral("8080"));
    for (const bool on : {true, false, true, false}) {
        box->setChecked(on);
        fixture.pane().updateEnabledStatus(on ? ChangeSwitch::Yes : ChangeSwitch::No);
        QCOMPARE(field->isEnabled(), on);
    }
}

void EnabledStatusTest::theSwitchIsEnabledByEveryRefresh()
{
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    for (const auto change : {ChangeSwitch::Yes, ChangeSwitch::No}) {
        fixture.pane().disableInterface();
        fixture.pane().updateEnabledStatus(change);
        QVERIFY(fixture.masterSwitch().enabled());
    }
}

void EnabledStatusTest::disableInterfaceDisablesTheSwitchAndNothingElse()
{
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    QHash<QWidget *, bool> before;
    for (auto *widget : fixture.window().findChildren<QWidget *>()) {
        before[widget] = widget->isEnabled();
    }
    fixture.pane().disableInterface();
    QVERIFY(!fixture.masterSwitch().enabled());
    for (auto it = before.cbegin(); it != before.cend(); ++it) {
        if (it.key() != &fixture.masterSwitch()) {
            QCOMPARE(it.key()->isEnabled(), it.value());
        }
    }
}

void EnabledStatusTest::aMoveOfTheSwitchMadeByThePaneStartsOrStops()
{
    test::ConsoleCapture console;
    PaneFixture fixture(std::chrono::milliseconds(200));
    PaneFixture::installJob();
    fixture.runProcess(QStringLiteral("OstrelListener"));
    fixture.open();
    fixture.waitUntilLoaded();
    QCOMPARE(refusals(console), 0);

    // Off at first: the line says so, the next word turns the switch on and that starts.
    fixture.showStatusOnly(QStringLiteral("Running"));
    fixture.masterSwitch().blockSignals(true);
    fixture.masterSwitch().setOn(false, Animated::No);
    fixture.masterSwitch().blockSignals(false);
    fixture.pane().updateEnabledStatus();
    QVERIFY(fixture.masterSwitch().isOn());
    QTRY_COMPARE(refusals(console), 1);
    fixture.waitUntilIdle();

    fixture.pane().updateStatus(
        {QString(), {}, {{QStringLiteral("status"), QStringLiteral("Disconnected")}}});
    QVERIFY(!fixture.masterSwitch().isOn());
    QCOMPARE(fixture.status(), QStringLiteral("Status: Not loaded"));
    QTRY_COMPARE(refusals(console), 2);
}

void EnabledStatusTest::whileLoadingAMoveOfTheSwitchStartsNothing()
{
    test::ConsoleCapture console;
    PaneFixture fixture(std::chrono::seconds(3));
    fixture.open();
    QTest::mouseClick(&fixture.masterSwitch(), Qt::LeftButton);
    QVERIFY(fixture.masterSwitch().isOn());
    QVERIFY(fixture.pane().isLoading());
    fixture.waitUntilLoaded();
    QVERIFY(!fixture.pane().isProcessing());
    QCOMPARE(refusals(console), 0);
}

void EnabledStatusTest::duringAStartOrStopAMoveOfTheSwitchStartsNothing()
{
    class BusyPane : public Ostrel_Preference_Pane {
    public:
        using Ostrel_Preference_Pane::Ostrel_Preference_Pane;
        using Ostrel_Preference_Pane::setProcessing;
    };
    test::ConsoleCapture console;
    const PaneFixture cleaner(std::chrono::milliseconds(100));
    QMainWindow window;
    BusyPane pane{platform::Bundle(QStringLiteral("/nonexistent"))};
    auto *view = pane.loadMainView(&window);
    QTRY_VERIFY(!pane.isLoading());
    pane.setProcessing(true);
    view->findChild<ZQSwitch *>(QStringLiteral("masterSwitch"))->setOn(true, Animated::No);
    QCOMPARE(refusals(console), 0);
    pane.setProcessing(false);
    view->findChild<ZQSwitch *>(QStringLiteral("masterSwitch"))->setOn(false, Animated::No);
    QTRY_COMPARE(refusals(console), 1);
}

void EnabledStatusTest::aDisabledSwitchStartsNothingEvenWhenCalledDirectly()
{
    test::ConsoleCapture console;
    PaneFixture fixture(std::chrono::milliseconds(100));
    fixture.open();
    fixture.waitUntilLoaded();
    fixture.pane().disableInterface();
    fixture.pane().enableDisableClient();
    QVERIFY(!fixture.pane().isProcessing());
    QTest::qWait(100);
    QCOMPARE(refusals(console), 0);
}

void EnabledStatusTest::aRefusedStartEndsWithTheSwitchOffAndAStop()
{
    test::ConsoleCapture console;
    PaneFixture fixture(std::chrono::milliseconds(100));
    fixture.open();
    fixture.waitUntilLoaded();
    QTest::mouseClick(&fixture.masterSwitch(), Qt::LeftButton);
    // The start is refused, its closing refresh moves the switch off, and that move stops.
    QTRY_COMPARE(refusals(console), 2);
    fixture.waitUntilIdle();
    QVERIFY(!fixture.masterSwitch().isOn());
    QCOMPARE(fixture.status(), QStringLiteral("Status: Not loaded"));
    QVERIFY(!QFile::exists(Ostrel_Preference_Pane::jobFilePath()));
    QVERIFY(fixture.notice().contains(QStringLiteral("password cannot be asked for")));
}

TEST_CLASS(EnabledStatusTest, QApplication)
#include "EnabledStatusTest.moc"
