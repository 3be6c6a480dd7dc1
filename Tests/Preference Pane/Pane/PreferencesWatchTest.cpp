// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Notifications/DistributedNotificationCenter.h"
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

using namespace std::chrono_literals;

namespace {

const QString confirm = QStringLiteral("confirmConnections");
const QString port = QStringLiteral("customPort");
const QString address = QStringLiteral("selectedMACAddress");

QCheckBox *confirmBox(const PaneFixture &fixture)
{
    return fixture.control<QCheckBox>("securityConfirmConnections");
}

QLineEdit *portField(const PaneFixture &fixture)
{
    return fixture.control<QLineEdit>("networkCustomPortText");
}

} // namespace

// What others write into the listener preferences file while the pane is open.
class PreferencesWatchTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void whatAnotherPaneSavesShowsAtOnce();
    void whatIsWrittenIntoTheFileItselfShows();
    void aFileOrFolderThatIsMadeLaterIsSeen();
    void anInterfaceChosenInAnotherPaneIsSelected();
    void whatIsReadIsNotSavedAndTheListenerNotTold();
    void ourOwnWritesReloadNothing();
    void aPortThatIsBeingTypedStays();
    void aFileThatCannotBeReadChangesNothing();
    void whatCouldNotBeSavedStaysThoughOtherFilesChange();
    void theSwitchStaysDisabledDuringAStart();
};

void PreferencesWatchTest::whatAnotherPaneSavesShowsAtOnce()
{
    PaneFixture fixture(60s);
    PaneFixture::writePreferences({{confirm, 0}});
    fixture.open();
    QWidget otherWindow;
    auto other = std::make_unique<Ostrel_Preference_Pane>(platform::Bundle(fixture.bundlePath()));
    other->loadMainView(&otherWindow);
    auto *otherBox = otherWindow.findChild<QCheckBox *>(QStringLiteral("networkCustomPortCheck"));
    for (const auto isOn : {true, false, true}) { // it is replaced each time
        otherBox->setChecked(isOn);
        QTRY_COMPARE(fixture.control<QCheckBox>("networkCustomPortCheck")->isChecked(), isOn);
        QCOMPARE(portField(fixture)->isEnabled(), isOn);
    }
    // And the other way round.
    confirmBox(fixture)->setChecked(true);
    QTRY_VERIFY(otherWindow.findChild<QCheckBox *>(QStringLiteral("securityConfirmConnections"))
                    ->isChecked());
    other.reset();
}

void PreferencesWatchTest::whatIsWrittenIntoTheFileItselfShows()
{
    PaneFixture fixture(60s);
    PaneFixture::writePreferences({{confirm, 0}});
    fixture.open();
    PaneFixture::writePreferencesBytes(
        "<plist version=\"1.0\"><dict><key>confirmConnections</key><integer>1</integer>"
        "<key>customPort</key><integer>99</integer></dict></plist>");
    QTRY_VERIFY(confirmBox(fixture)->isChecked());
    QCOMPARE(portField(fixture)->text(), QStringLiteral("99"));
}

void PreferencesWatchTest::aFileOrFolderThatIsMadeLaterIsSeen()
{
    PaneFixture fixture(20ms); // the poll looks for the folder
    QDir(PaneFixture::preferencesFolder()).removeRecursively();
    fixture.open();
    QDir().mkpath(PaneFixture::preferencesFolder());
    QTest::qWait(500);
    PaneFixture::writePreferences({{confirm, 1}});
    QTRY_VERIFY(confirmBox(fixture)->isChecked());
}

void PreferencesWatchTest::anInterfaceChosenInAnotherPaneIsSelected()
{
    PaneFixture fixture(60s);
    PaneFixture::writePreferences({});
    fixture.open();
    auto *menu = fixture.control<QComboBox>("networkInterfacePopUp");
    auto *hint = fixture.control<QLabel>("networkInterfaceHint");
    menu->addItem(QStringLiteral("Wired - eth0"), QStringLiteral("0a:1b"));
    PaneFixture::writePreferences({{address, QStringLiteral("0a:1b")}});
    QTRY_COMPARE(menu->currentText(), QStringLiteral("Wired - eth0"));
    QVERIFY(hint->isHidden());
    PaneFixture::writePreferences({{address, QStringLiteral("0c:1d")}});
    QTRY_VERIFY(!hint->isHidden());
    QCOMPARE(menu->currentIndex(), 0);
    PaneFixture::writePreferences({});
    QTRY_VERIFY(hint->isHidden());
}

void PreferencesWatchTest::whatIsReadIsNotSavedAndTheListenerNotTold()
{
    PaneFixture fixture(60s);
    PaneFixture::writePreferences({});
    int told = 0;
    const platform::DistributedObserver observer(
        QStringLiteral("ZQOstrelClientRelaunch"),
        [&](const platform::Notification & /*notification*/) { ++told; });
    fixture.open();
    const QVariantMap written{{QStringLiteral("disableBonjour"), 1}, {port, 99}, {confirm, 2}};
    PaneFixture::writePreferences(written);
    QTRY_VERIFY(fixture.control<QCheckBox>("networkDisableBonjour")->isChecked());
    QTest::qWait(1500); // more than a typed port rests
    QCOMPARE(PaneFixture::preferences().keys(), written.keys());
    QCOMPARE(PaneFixture::preferences().value(confirm).toInt(), 2);
    QCOMPARE(told, 0);
}

void PreferencesWatchTest::ourOwnWritesReloadNothing()
{
    PaneFixture fixture(50ms); // the start-up check writes too
    fixture.open();
    portField(fixture)->setText(QStringLiteral("080")); // a reload would show 80
    QTRY_COMPARE(PaneFixture::preferences().value(port).toInt(), 80);
    confirmBox(fixture)->setChecked(true);
    fixture.waitUntilLoaded();
    QTest::qWait(500);
    QCOMPARE(portField(fixture)->text(), QStringLiteral("080"));
    // What others write does.
    auto other = PaneFixture::preferences();
    other[confirm] = 0;
    PaneFixture::writePreferences(other);
    QTRY_COMPARE(portField(fixture)->text(), QStringLiteral("80"));
}

void PreferencesWatchTest::aPortThatIsBeingTypedStays()
{
    PaneFixture fixture(60s);
    PaneFixture::writePreferences({{port, 90}, {confirm, 0}});
    fixture.open();
    auto digits = QStringLiteral("81");
    portField(fixture)->setText(digits);
    PaneFixture::writePreferences({{port, 91}, {confirm, 1}});
    while (!confirmBox(fixture)->isChecked()) { // typing on, until the change is read
        digits += QLatin1Char('1');
        portField(fixture)->setText(digits.left(5));
        portField(fixture)->setText(digits);
        QTest::qWait(100);
        QVERIFY(digits.size() < 200);
    }
    QCOMPARE(portField(fixture)->text(), digits);
}

void PreferencesWatchTest::aFileThatCannotBeReadChangesNothing()
{
    PaneFixture fixture(60s);
    PaneFixture::writePreferences({{confirm, 1}, {port, 99}});
    fixture.open();
    QVERIFY(confirmBox(fixture)->isChecked());
    PaneFixture::writePreferencesBytes("no property list");
    QTest::qWait(300);
    QVERIFY(confirmBox(fixture)->isChecked());
    QFile::remove(PaneFixture::preferencesPath());
    QTest::qWait(300);
    QVERIFY(confirmBox(fixture)->isChecked());
    // It is still watched.
    PaneFixture::writePreferences({{confirm, 0}});
    QTRY_VERIFY(!confirmBox(fixture)->isChecked());
}

void PreferencesWatchTest::whatCouldNotBeSavedStaysThoughOtherFilesChange()
{
    PaneFixture fixture(60s);
    PaneFixture::writePreferences({{confirm, 0}});
    fixture.open();
    {
        const QSignalBlocker unsaved(confirmBox(fixture));
        confirmBox(fixture)->setChecked(true);
    }
    QFile other(PaneFixture::preferencesFolder() + QStringLiteral("/another.plist"));
    QVERIFY(other.open(QIODevice::WriteOnly));
    other.close();
    QTest::qWait(300);
    QVERIFY(confirmBox(fixture)->isChecked());
}

void PreferencesWatchTest::theSwitchStaysDisabledDuringAStart()
{
    PaneFixture fixture(60s);
    PaneFixture::writePreferences({});
    fixture.open();
    fixture.pane().disableInterface();
    PaneFixture::writePreferences({{confirm, 1}});
    QTRY_VERIFY(confirmBox(fixture)->isChecked());
    QVERIFY(!fixture.masterSwitch().enabled());
}

TEST_CLASS(PreferencesWatchTest, QApplication)
#include "PreferencesWatchTest.moc"
