// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ZQSwitch.h"
#include "Tests/Support/TestProgram.h"

#include <QAccessible>
#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>

namespace {

struct StateChange {
    QObject *object;
    QAccessible::State changed;
    bool checkedThen;
};

QList<StateChange> stateChanges;

void recordUpdate(QAccessibleEvent *event)
{
    if (event->type() == QAccessible::StateChanged) {
        auto *change = static_cast<QAccessibleStateChangeEvent *>(event);
        const auto *view = qobject_cast<ZQSwitch *>(event->object());
        stateChanges << StateChange{event->object(), change->changedStates(),
                                    view != nullptr && view->isOn()};
    }
}

} // namespace

class ZQSwitchAccessibilityTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void itIsACheckBox();
    void itsNameIsTheWidgets();
    void itsStateFollowsTheValue();
    void itsStateSaysDisabledAndFocused();
    void togglingAndPressingClickTheKnob();
    void aDisabledSwitchOffersNoToggle();
    void itCanBeGivenTheFocus();
    void changesOfTheValueAreAnnounced();
    void anUnchangedValueIsNotAnnounced();
    void disablingIsAnnounced();
    void otherWidgetsKeepTheirOwnInterface();

private:
    QAccessibleInterface *accessible() const
    {
        return QAccessible::queryAccessibleInterface(m_switch);
    }

    std::unique_ptr<QWidget> m_window;
    ZQSwitch *m_switch = nullptr;
};

// As a screen reader does when it starts.
void ZQSwitchAccessibilityTest::initTestCase()
{
    auto enable = QDBusMessage::createMethodCall(
        QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"));
    enable << QStringLiteral("org.a11y.Status") << QStringLiteral("IsEnabled")
           << QVariant::fromValue(QDBusVariant(true));
    const auto answer = QDBusConnection::sessionBus().call(enable);
    QVERIFY2(answer.type() == QDBusMessage::ReplyMessage, qPrintable(answer.errorMessage()));
    QTRY_VERIFY_WITH_TIMEOUT(QAccessible::isActive(), 20000);
}

void ZQSwitchAccessibilityTest::init()
{
    m_window = std::make_unique<QWidget>();
    auto *column = new QVBoxLayout(m_window.get());
    m_switch = new ZQSwitch;
    m_switch->setAccessibleName(QStringLiteral("Ostrel listener"));
    column->addWidget(m_switch);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    stateChanges.clear();
    QAccessible::installUpdateHandler(recordUpdate);
}

void ZQSwitchAccessibilityTest::cleanup()
{
    QAccessible::installUpdateHandler(nullptr);
    m_window.reset();
}

void ZQSwitchAccessibilityTest::itIsACheckBox()
{
    QVERIFY(accessible() != nullptr);
    QCOMPARE(accessible()->role(), QAccessible::CheckBox);
    QCOMPARE(accessible()->childCount(), 0);
}

void ZQSwitchAccessibilityTest::itsNameIsTheWidgets()
{
    QCOMPARE(accessible()->text(QAccessible::Name), QStringLiteral("Ostrel listener"));
}

void ZQSwitchAccessibilityTest::itsStateFollowsTheValue()
{
    QVERIFY(accessible()->state().checkable);
    QVERIFY(!accessible()->state().checked);
    m_switch->setOn(true);
    QVERIFY(accessible()->state().checked);
    m_switch->setOn(false, Animated::Yes);
    QVERIFY(!accessible()->state().checked);
}

void ZQSwitchAccessibilityTest::itsStateSaysDisabledAndFocused()
{
    QVERIFY(accessible()->state().focusable);
    QVERIFY(!accessible()->state().disabled);
    m_switch->setFocus();
    QVERIFY(accessible()->state().focused);
    m_switch->setEnabled(false);
    QVERIFY(accessible()->state().disabled);
    QVERIFY(!accessible()->state().focused);
    m_switch->setEnabled(true);
    QVERIFY(!accessible()->state().disabled);
}

void ZQSwitchAccessibilityTest::togglingAndPressingClickTheKnob()
{
    auto *actions = accessible()->actionInterface();
    QVERIFY(actions != nullptr);
    QCOMPARE(actions->actionNames().value(0), QAccessibleActionInterface::toggleAction());
    QVERIFY(actions->actionNames().contains(QAccessibleActionInterface::pressAction()));
    m_switch->setEnabled(true); // shows the pressed face, until a release
    actions->doAction(QAccessibleActionInterface::toggleAction());
    QVERIFY(m_switch->isOn());
    QCOMPARE(m_switch->buttonLayer()->theSwitch()->contents(),
             m_switch->buttonLayer()->notClickedImgRef());
    actions->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(!m_switch->isOn());
    actions->doAction(QStringLiteral("no such action"));
    QVERIFY(!m_switch->isOn());
}

void ZQSwitchAccessibilityTest::aDisabledSwitchOffersNoToggle()
{
    m_switch->setEnabled(false);
    auto *actions = accessible()->actionInterface();
    QVERIFY(!actions->actionNames().contains(QAccessibleActionInterface::toggleAction()));
    actions->doAction(QAccessibleActionInterface::toggleAction());
    QVERIFY(!m_switch->isOn());
    QCOMPARE(m_switch->buttonLayer()->currentEventState(), ZQSwitchButtonCALayer::EventState::Idle);
}

void ZQSwitchAccessibilityTest::itCanBeGivenTheFocus()
{
    accessible()->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
    QVERIFY(m_switch->hasFocus());
}

void ZQSwitchAccessibilityTest::changesOfTheValueAreAnnounced()
{
    QTest::keyClick(m_switch, Qt::Key_Space);
    QCOMPARE(stateChanges.size(), 1);
    QCOMPARE(stateChanges[0].object, m_switch);
    QVERIFY(stateChanges[0].changed.checked);
    QVERIFY(stateChanges[0].checkedThen);
    m_switch->setOn(false, Animated::No);
    QCOMPARE(stateChanges.size(), 2);
    QVERIFY(!stateChanges[1].checkedThen);
}

void ZQSwitchAccessibilityTest::anUnchangedValueIsNotAnnounced()
{
    m_switch->setOn(false);
    m_switch->setOn(false, Animated::Yes);
    QCOMPARE(stateChanges.size(), 0);
}

void ZQSwitchAccessibilityTest::disablingIsAnnounced()
{
    m_switch->setEnabled(false);
    const bool announced =
        std::any_of(stateChanges.cbegin(), stateChanges.cend(), [this](const StateChange &change) {
            return change.object == m_switch && change.changed.disabled;
        });
    QVERIFY(announced);
}

void ZQSwitchAccessibilityTest::otherWidgetsKeepTheirOwnInterface()
{
    auto *window = QAccessible::queryAccessibleInterface(m_window.get());
    QVERIFY(window != nullptr && window->role() != QAccessible::CheckBox);
}

TEST_CLASS(ZQSwitchAccessibilityTest, QApplication)
#include "ZQSwitchAccessibilityTest.moc"
