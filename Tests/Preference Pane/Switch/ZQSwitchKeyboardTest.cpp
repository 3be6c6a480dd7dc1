// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ZQSwitch.h"
#include "ReportedValues.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using State = ZQSwitchButtonCALayer::EventState;

// A window with a text field, the switch and another text field.
class ZQSwitchKeyboardTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void tabReachesTheSwitchAndLeavesIt();
    void tabPassesADisabledSwitch();
    void spaceTogglesThroughTheKnobsPressAndRelease();
    void spaceTogglesOnceHoweverLongItIsHeld();
    void spaceReportsAsAClickDoes();
    void enterIsLeftToTheWindow();
    void shortcutsWithSpaceAreLeftToTheWindow();
    void escapeTakesAPressOfSpaceBack();
    void movingTheFocusTakesAPressOfSpaceBack();
    void aMousePressTakesAPressOfSpaceBack();
    void spaceDuringAMousePressDoesNothing();
    void theFocusComesBackToASwitchThatWasDisabledForAMoment();
    void theFocusStaysWhereItWasMovedMeanwhile();
    void theFocusRingIsShownInTheThemesHighlight_data();
    void theFocusRingIsShownInTheThemesHighlight();
    void aClickTakesTheFocusWithoutARing();
    void aWindowThatComesToTheFrontKeepsTheRingAsItWas();

private:
    QImage face() const { return m_switch->buttonLayer()->theSwitch()->contents(); }
    QImage picture() const { return m_switch->grab().toImage(); }

    std::unique_ptr<QWidget> m_window;
    QLineEdit *m_before = nullptr;
    ZQSwitch *m_switch = nullptr;
    QLineEdit *m_after = nullptr;
};

void ZQSwitchKeyboardTest::init()
{
    m_window = std::make_unique<QWidget>();
    auto *column = new QVBoxLayout(m_window.get());
    m_before = new QLineEdit;
    m_switch = new ZQSwitch;
    m_after = new QLineEdit;
    column->addWidget(m_before);
    column->addWidget(m_switch);
    column->addWidget(m_after);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_before->setFocus();
}

void ZQSwitchKeyboardTest::cleanup()
{
    m_window.reset();
}

void ZQSwitchKeyboardTest::tabReachesTheSwitchAndLeavesIt()
{
    QTest::keyClick(m_window.get(), Qt::Key_Tab);
    QVERIFY(m_switch->hasFocus());
    QTest::keyClick(m_window.get(), Qt::Key_Tab);
    QVERIFY(m_after->hasFocus());
    QTest::keyClick(m_window.get(), Qt::Key_Backtab);
    QVERIFY(m_switch->hasFocus());
}

void ZQSwitchKeyboardTest::tabPassesADisabledSwitch()
{
    m_switch->setEnabled(false);
    QTest::keyClick(m_window.get(), Qt::Key_Tab);
    QVERIFY(m_after->hasFocus());
}

void ZQSwitchKeyboardTest::spaceTogglesThroughTheKnobsPressAndRelease()
{
    m_switch->setFocus();
    QTest::keyPress(m_switch, Qt::Key_Space);
    QCOMPARE(m_switch->buttonLayer()->currentEventState(), State::PressedKnob);
    QCOMPARE(face(), m_switch->buttonLayer()->clickedImgRef());
    QVERIFY(!m_switch->isOn());
    QTest::keyRelease(m_switch, Qt::Key_Space);
    QVERIFY(m_switch->isOn());
    QCOMPARE(face(), m_switch->buttonLayer()->notClickedImgRef());
    QTest::keyClick(m_switch, Qt::Key_Space);
    QVERIFY(!m_switch->isOn());
}

void ZQSwitchKeyboardTest::spaceTogglesOnceHoweverLongItIsHeld()
{
    m_switch->setFocus();
    QTest::keyPress(m_switch, Qt::Key_Space);
    for (int i = 0; i < 5; ++i) {
        for (const auto type : {QEvent::KeyRelease, QEvent::KeyPress}) {
            QKeyEvent repeat(type, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "), true);
            QCoreApplication::sendEvent(m_switch, &repeat);
            QVERIFY(repeat.isAccepted());
        }
    }
    QVERIFY(!m_switch->isOn());
    QTest::keyRelease(m_switch, Qt::Key_Space);
    QVERIFY(m_switch->isOn());
}

void ZQSwitchKeyboardTest::spaceReportsAsAClickDoes()
{
    m_switch->setFocus();
    QSignalSpy reports(m_switch, &ZQSwitch::onChanged);
    QTest::keyClick(m_switch, Qt::Key_Space);
    const QList<bool> byKey = valuesOf(reports);
    QTest::keyClick(m_switch, Qt::Key_Space);
    reports.clear();
    QTest::mouseClick(m_switch, Qt::LeftButton, {}, {20, 12});
    QCOMPARE(valuesOf(reports), byKey);
}

void ZQSwitchKeyboardTest::enterIsLeftToTheWindow()
{
    m_switch->setFocus();
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_A}) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(m_switch, &event);
        QVERIFY(!event.isAccepted());
        QKeyEvent end(QEvent::KeyRelease, key, Qt::NoModifier);
        QCoreApplication::sendEvent(m_switch, &end);
        QVERIFY(!end.isAccepted());
    }
    QVERIFY(!m_switch->isOn());
}

void ZQSwitchKeyboardTest::shortcutsWithSpaceAreLeftToTheWindow()
{
    m_switch->setFocus();
    for (const auto modifier : {Qt::ControlModifier, Qt::AltModifier, Qt::MetaModifier}) {
        QTest::keyClick(m_switch, Qt::Key_Space, modifier);
        QVERIFY(!m_switch->isOn());
        QCOMPARE(m_switch->buttonLayer()->currentEventState(), State::Idle);
    }
}

void ZQSwitchKeyboardTest::escapeTakesAPressOfSpaceBack()
{
    m_switch->setFocus();
    QTest::keyPress(m_switch, Qt::Key_Space);
    QTest::keyClick(m_switch, Qt::Key_Escape);
    QCOMPARE(face(), m_switch->buttonLayer()->notClickedImgRef());
    QTest::keyRelease(m_switch, Qt::Key_Space);
    QVERIFY(!m_switch->isOn());
}

void ZQSwitchKeyboardTest::movingTheFocusTakesAPressOfSpaceBack()
{
    m_switch->setFocus();
    QTest::keyPress(m_switch, Qt::Key_Space);
    m_after->setFocus();
    QCOMPARE(m_switch->buttonLayer()->currentEventState(), State::Idle);
    QTest::keyRelease(m_switch, Qt::Key_Space);
    QVERIFY(!m_switch->isOn());
}

void ZQSwitchKeyboardTest::aMousePressTakesAPressOfSpaceBack()
{
    m_switch->setFocus();
    QTest::keyPress(m_switch, Qt::Key_Space);
    QTest::mousePress(m_switch, Qt::LeftButton, {}, {70, 12});
    QCOMPARE(m_switch->buttonLayer()->currentEventState(), State::PressedBeside);
    QTest::keyRelease(m_switch, Qt::Key_Space);
    QVERIFY(!m_switch->isOn());
    QTest::mouseRelease(m_switch, Qt::LeftButton, {}, {70, 12});
    QVERIFY(m_switch->isOn());
}

void ZQSwitchKeyboardTest::spaceDuringAMousePressDoesNothing()
{
    QTest::mousePress(m_switch, Qt::LeftButton, {}, {70, 12});
    QTest::keyClick(m_switch, Qt::Key_Space);
    QVERIFY(!m_switch->isOn());
    QCOMPARE(m_switch->buttonLayer()->currentEventState(), State::PressedBeside);
    QTest::mouseRelease(m_switch, Qt::LeftButton, {}, {70, 12});
    QVERIFY(m_switch->isOn());
}

void ZQSwitchKeyboardTest::theFocusComesBackToASwitchThatWasDisabledForAMoment()
{
    connect(m_switch, &ZQSwitch::onChanged, this, [this] { m_switch->setEnabled(false); });
    m_switch->setFocus(Qt::TabFocusReason);
    QTest::keyClick(m_switch, Qt::Key_Space);
    QVERIFY(m_switch->isOn());
    QVERIFY(!m_switch->hasFocus());
    m_switch->setEnabled(true);
    QVERIFY(m_switch->hasFocus());
    m_switch->disconnect(this);
    QTest::keyClick(m_switch, Qt::Key_Space);
    QVERIFY(!m_switch->isOn());
}

void ZQSwitchKeyboardTest::theFocusStaysWhereItWasMovedMeanwhile()
{
    m_switch->setFocus(Qt::TabFocusReason);
    m_switch->setEnabled(false);
    m_before->setFocus();
    m_switch->setEnabled(true);
    QVERIFY(m_before->hasFocus());
    m_switch->setEnabled(false); // now without the focus
    m_switch->setEnabled(true);
    QVERIFY(m_before->hasFocus());
}

void ZQSwitchKeyboardTest::theFocusRingIsShownInTheThemesHighlight_data()
{
    QTest::addColumn<QColor>("window");
    QTest::addColumn<QColor>("highlight");
    QTest::newRow("light") << QColor(0xef, 0xf0, 0xf1) << QColor(0x3d, 0xae, 0xe9);
    QTest::newRow("dark") << QColor(0x2a, 0x2e, 0x32) << QColor(0x1d, 0x99, 0xf3);
}

void ZQSwitchKeyboardTest::theFocusRingIsShownInTheThemesHighlight()
{
    QFETCH(QColor, window);
    QFETCH(QColor, highlight);
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::Highlight, highlight);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    m_switch->setPalette(palette);
    const QImage without = picture();
    m_switch->setFocus(Qt::TabFocusReason);
    const QImage with = picture();
    // Two lines all round: the highlight at the edge, and one that sets it off from the greys.
    for (const auto &edge :
         {QPoint(44, 0), QPoint(44, 1), QPoint(44, 23), QPoint(0, 12), QPoint(87, 12)}) {
        QCOMPARE(with.pixelColor(edge), highlight);
        QVERIFY(without.pixelColor(edge) != highlight);
    }
    for (const auto &inside : {QPoint(44, 2), QPoint(44, 21), QPoint(2, 12), QPoint(85, 12)}) {
        QCOMPARE(with.pixelColor(inside), QColor(Qt::white));
    }
    QCOMPARE(with.pixelColor(60, 12), without.pixelColor(60, 12));
    m_after->setFocus(Qt::TabFocusReason);
    QCOMPARE(picture(), without);
}

void ZQSwitchKeyboardTest::aClickTakesTheFocusWithoutARing()
{
    m_switch->setFocus(Qt::MouseFocusReason);
    const QImage clicked = picture();
    m_before->setFocus();
    QCOMPARE(picture(), clicked);
    m_switch->setFocus(Qt::MouseFocusReason);
    QTest::keyClick(m_switch, Qt::Key_Escape);
    QCOMPARE(picture(), clicked);
    QTest::keyPress(m_switch, Qt::Key_Space); // who goes on with the keyboard is shown the ring
    QVERIFY(picture().pixelColor(44, 0) != clicked.pixelColor(44, 0));
}

void ZQSwitchKeyboardTest::aWindowThatComesToTheFrontKeepsTheRingAsItWas()
{
    for (const auto reason : {Qt::MouseFocusReason, Qt::TabFocusReason}) {
        m_switch->setFocus(reason);
        const QImage before = picture();
        QWidget other;
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        QTRY_VERIFY(!m_switch->hasFocus());
        m_window->activateWindow();
        QTRY_VERIFY(m_switch->hasFocus());
        QCOMPARE(picture(), before);
        m_before->setFocus();
    }
}

TEST_CLASS(ZQSwitchKeyboardTest, QApplication)
#include "ZQSwitchKeyboardTest.moc"
