// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Notifications/DistributedNotificationCenter.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Preference Pane/Presets/PageFixture.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>

// What a screen reader or a voice control changes is saved as what a person's hand changes.
class AssistiveTechnologyTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aToggledBoxIsSavedAtOnce_data();
    void aToggledBoxIsSavedAtOnce();
    void aToggledNetworkBoxIsSavedBeforeTheListenerIsAskedToRelaunch();
    void aTextSetInThePortFieldIsSavedOnceItRests();
    void aPortSavedAlongWithAnotherSettingIsToldToTheListener();
    void aTextSetJustBeforeClosingIsSaved();
    void anInterfaceSelectedInTheListIsSaved();
    void theInterfaceThatShowsMayBeChosenAgain();
    void aChangeByAProgramIsSavedOnce();
    void loadingAndFillingSaveNothing();
    void theToggledSwitchStartsTheListener();
    void aSelectedApplicationIsShown();
    void aSelectedKeyGetsTheShortcut();
};

namespace {

const QString customPort = QStringLiteral("customPort");
const QString address = QStringLiteral("selectedMACAddress");

void act(QAccessibleInterface *object, const QString &action)
{
    QVERIFY(object != nullptr && object->actionInterface() != nullptr);
    QVERIFY2(object->actionInterface()->actionNames().contains(action), qPrintable(action));
    object->actionInterface()->doAction(action);
}

QAccessibleInterface *accessible(QObject *object)
{
    return QAccessible::queryAccessibleInterface(object);
}

void toggle(QAccessibleInterface *object)
{
    act(object, QAccessibleActionInterface::toggleAction());
}

void setText(QLineEdit *field, const QString &text)
{
    auto *editable = accessible(field)->editableTextInterface();
    QVERIFY(editable != nullptr);
    editable->replaceText(0, static_cast<int>(field->text().size()), text);
}

// How often the listener was asked to relaunch, and what it would have read each time.
class Relaunches {
public:
    int count() const { return static_cast<int>(m_read.size()); }
    const QVariantMap &read(int index) const { return m_read[index]; }

private:
    QList<QVariantMap> m_read;
    platform::DistributedObserver m_observer{
        QStringLiteral("ZQOstrelClientRelaunch"),
        [this](const platform::Notification &) { m_read.append(PaneFixture::preferences()); }};
};

QAccessibleInterface *cell(QAbstractItemView *view, int row)
{
    return accessible(view)->tableInterface()->cellAt(row, 0);
}

} // namespace

void AssistiveTechnologyTest::aToggledBoxIsSavedAtOnce_data()
{
    QTest::addColumn<QString>("control");
    QTest::addColumn<QString>("key");
    const auto row = [](const char *control, const char *key) {
        QTest::newRow(key) << QString::fromLatin1(control) << QString::fromLatin1(key);
    };
    row("autoUpdateCheck", "autoUpdateCheck");
    row("volFeedbackCheck", "volChangeFeedback");
    row("networkCustomPortCheck", "customPortSet");
    row("networkDisableBonjour", "disableBonjour");
    row("securityConfirmConnections", "confirmConnections");
    row("securityAllowOneConnection", "limitToOneConnection");
}

void AssistiveTechnologyTest::aToggledBoxIsSavedAtOnce()
{
    QFETCH(const QString, control);
    QFETCH(const QString, key);
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    auto *box = fixture.control<QCheckBox>(qPrintable(control));
    for (int time = 0; time < 2; ++time) {
        toggle(accessible(box));
        QCOMPARE(PaneFixture::preferences().value(key), QVariant(box->isChecked() ? 1LL : 0LL));
    }
}

void AssistiveTechnologyTest::aToggledNetworkBoxIsSavedBeforeTheListenerIsAskedToRelaunch()
{
    const Relaunches relaunches;
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    toggle(accessible(fixture.control<QCheckBox>("securityConfirmConnections")));
    toggle(accessible(fixture.control<QCheckBox>("networkDisableBonjour")));
    QTRY_COMPARE(relaunches.count(), 1);
    QCOMPARE(relaunches.read(0).value(QStringLiteral("disableBonjour")), QVariant(1LL));
}

void AssistiveTechnologyTest::aTextSetInThePortFieldIsSavedOnceItRests()
{
    const Relaunches relaunches;
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferences({{QStringLiteral("customPortSet"), 1}});
    fixture.open();
    auto *field = fixture.control<QLineEdit>("networkCustomPortText");
    setText(field, QStringLiteral("90"));
    setText(field, QStringLiteral("9001"));
    QVERIFY(!PaneFixture::preferences().contains(customPort));
    QTRY_COMPARE(relaunches.count(), 1);
    QCOMPARE(relaunches.read(0).value(customPort), QVariant(9001LL));
}

void AssistiveTechnologyTest::aPortSavedAlongWithAnotherSettingIsToldToTheListener()
{
    const Relaunches relaunches;
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    setText(fixture.control<QLineEdit>("networkCustomPortText"), QStringLiteral("9003"));
    toggle(accessible(fixture.control<QCheckBox>("securityConfirmConnections")));
    QCOMPARE(PaneFixture::preferences().value(customPort), QVariant(9003LL));
    QTRY_COMPARE(relaunches.count(), 1);
}

void AssistiveTechnologyTest::aTextSetJustBeforeClosingIsSaved()
{
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    setText(fixture.control<QLineEdit>("networkCustomPortText"), QStringLiteral("9002"));
    fixture.close();
    QCOMPARE(PaneFixture::preferences().value(customPort), QVariant(9002LL));
}

void AssistiveTechnologyTest::anInterfaceSelectedInTheListIsSaved()
{
    const Relaunches relaunches;
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    auto *menu = fixture.control<QComboBox>("networkInterfacePopUp");
    menu->addItem(QStringLiteral("Ethernet - eth0"), QStringLiteral("0a:1B"));
    menu->addItem(QStringLiteral("Wi-Fi - wlan0"), QStringLiteral("0c:1D"));
    const int last = menu->count() - 1;
    fixture.pane().showPage(QStringLiteral("network"));
    for (const bool open : {false, true}) {
        open ? menu->showPopup() : menu->hidePopup();
        const int row = open ? last - 1 : last;
        toggle(accessible(menu->view())->child(row));
        QTRY_COMPARE(menu->currentIndex(), row);
        QVERIFY(!menu->view()->isVisible());
        QCOMPARE(PaneFixture::preferences().value(address), menu->itemData(row));
    }
    QTRY_COMPARE(relaunches.count(), 2);
}

// As when the saved interface is not there: the first one shows, and choosing it forgets the other.
void AssistiveTechnologyTest::theInterfaceThatShowsMayBeChosenAgain()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferences({{address, QStringLiteral("not there")}});
    fixture.open();
    auto *menu = fixture.control<QComboBox>("networkInterfacePopUp");
    fixture.pane().showPage(QStringLiteral("network"));
    for (int time = 0; time < 2; ++time) {
        PaneFixture::writePreferences({{address, QStringLiteral("not there")}});
        menu->showPopup();
        QTest::keyClick(menu->view(), Qt::Key_Return);
        QVERIFY(!PaneFixture::preferences().contains(address));
    }
}

void AssistiveTechnologyTest::aChangeByAProgramIsSavedOnce()
{
    const Relaunches relaunches;
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    auto *menu = fixture.control<QComboBox>("networkInterfacePopUp");
    menu->addItem(QStringLiteral("Ethernet - eth0"), QStringLiteral("0a:1B"));
    fixture.pane().showPage(QStringLiteral("network"));
    menu->setFocus();
    QTest::keyClick(menu, Qt::Key_End);
    QTest::keyClick(menu->view(), Qt::Key_Return); // both changes the index and activates it
    QVERIFY(PaneFixture::preferences().contains(address));
    fixture.control<QCheckBox>("networkDisableBonjour")->click();
    QTRY_COMPARE(relaunches.count(), 2);
    // Word of a third one would have come before that of the next.
    fixture.control<QCheckBox>("networkDisableBonjour")->setChecked(false);
    QTRY_VERIFY(relaunches.count() >= 3);
    QCOMPARE(relaunches.count(), 3);
    QCOMPARE(relaunches.read(2).value(QStringLiteral("disableBonjour")), QVariant(0LL));
}

void AssistiveTechnologyTest::loadingAndFillingSaveNothing()
{
    PaneFixture fixture(std::chrono::seconds(60));
    const QVariantMap stored{
        {QStringLiteral("autoUpdateCheck"), 0},      {QStringLiteral("volChangeFeedback"), 0},
        {QStringLiteral("customPortSet"), 1},        {customPort, 99},
        {QStringLiteral("disableBonjour"), 1},       {QStringLiteral("confirmConnections"), 1},
        {QStringLiteral("limitToOneConnection"), 1}, {address, QStringLiteral("not there")}};
    PaneFixture::writePreferences(stored);
    const Relaunches relaunches;
    fixture.open();
    auto *menu = fixture.control<QComboBox>("networkInterfacePopUp");
    {
        const QSignalBlocker blocked(menu);
        menu->addItem(QStringLiteral("Ethernet - eth0"), QStringLiteral("0a:1B"));
        menu->setCurrentIndex(menu->count() - 1);
    }
    fixture.pane().populateNetworkInterfaces();
    QCOMPARE(menu->currentIndex(), 0);
    fixture.close();
    QCOMPARE(PaneFixture::preferences().keys(), stored.keys());
    QCOMPARE(PaneFixture::preferences().value(address).toString(), QStringLiteral("not there"));
    QCOMPARE(relaunches.count(), 0);
}

void AssistiveTechnologyTest::theToggledSwitchStartsTheListener()
{
    test::ConsoleCapture console;
    PaneFixture fixture(std::chrono::milliseconds(50));
    fixture.open();
    fixture.waitUntilLoaded();
    toggle(accessible(&fixture.masterSwitch()));
    QTRY_VERIFY(!console.lines()
                     .filter(QStringLiteral("Unable to ask for the administrator's authorisation"))
                     .isEmpty());
    fixture.waitUntilIdle();
}

void AssistiveTechnologyTest::aSelectedApplicationIsShown()
{
    PresetFixture presets;
    for (const auto *title : {"One", "Two"}) {
        const QVariantMap keys{{QStringLiteral("play"), QString::fromLatin1(title)}};
        PresetFixture::writeUser(QString::fromLatin1(title), {{QStringLiteral("keys"), keys}});
    }
    Page page(presets);
    page.show();
    toggle(cell(page.applications(), 1));
    QCOMPARE(page->browser()->selectedTitle(), QStringLiteral("Two"));
    QCOMPARE(page.shortcut(0), QStringLiteral("Two"));
}

void AssistiveTechnologyTest::aSelectedKeyGetsTheShortcut()
{
    const PresetFixture presets;
    PresetFixture::writeUser(QStringLiteral("One"), {{QStringLiteral("keys"), QVariantMap()}});
    Page page(presets);
    page.show();
    toggle(cell(page.keys(), 1));
    QCOMPARE(page.keys()->selectedRow(), 1);
    page.keys()->setFocus();
    QTest::keyClick(page.keys(), Qt::Key_Return);
    QVERIFY(page->panel()->isVisible());
    QTest::keyClick(page->panel(), Qt::Key_S);
    const auto keys =
        PresetFixture::user(QStringLiteral("One")).value(QStringLiteral("keys")).toMap();
    QCOMPARE(keys.value(QStringLiteral("stop")).toMap().value(QStringLiteral("val")).toString(),
             QStringLiteral("S"));
    toggle(cell(page.keys(), 2));
    QTest::keyClick(page.keys(), Qt::Key_Up); // from the row that was selected
    QCOMPARE(page.keys()->selectedRow(), 1);
}

TEST_CLASS(AssistiveTechnologyTest, QApplication)
#include "AssistiveTechnologyTest.moc"
