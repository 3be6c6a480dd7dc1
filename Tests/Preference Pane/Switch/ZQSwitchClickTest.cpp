// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ZQSwitch.h"
#include "ReportedValues.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

using State = ZQSwitchButtonCALayer::EventState;

namespace {

constexpr ulong Quick = 50;
constexpr ulong Slow = 10000;

} // namespace

// The view's part in handling the mouse; the events have the times that the test gives them.
class ZQSwitchClickTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void thePointOfAnEventCountsFromTheBottom();
    void theTopmostAndTheLowestRowAreInsideTheKnob();
    void aClickToggles();
    void aSlowSecondClickTogglesBack();
    void ofADoubleClickOnlyTheFirstActs();
    void ofATripleClickOnlyTheFirstActs();
    void ofAQuadrupleClickOnlyTheFirstActs();
    void twoQuickClicksApartBothAct();
    void dragsAreHandedOnWhateverTheClickCount();
    void theSecondPressOfADoubleClickCannotDrag();
    void aDragSetsTheValueByWhereTheKnobIs();
    void onlyTheLeftButtonActs();
    void aSecondButtonDoesNotEndTheDrag();
    void aDisabledSwitchIgnoresPressesAndDrags();
    void aReleaseOnADisabledSwitchReportsTheUnchangedValue();
    void hidingTheSwitchPutsADraggedKnobBack();
    void anotherWindowThatComesToTheFrontPutsADraggedKnobBack();
    void rightToLeftLayoutsDoNotMirrorIt();

private:
    bool send(QEvent::Type type, const QPointF &at, Qt::MouseButton button = Qt::LeftButton,
              Qt::MouseButtons buttons = Qt::LeftButton);
    void press(const QPointF &at, QEvent::Type type = QEvent::MouseButtonPress);
    void drag(const QPointF &to) { send(QEvent::MouseMove, to, Qt::NoButton); }
    void release(const QPointF &at);
    void click(const QPointF &at, QEvent::Type type = QEvent::MouseButtonPress);
    qreal knobX() const { return m_view->buttonLayer()->theSwitch()->frame().x(); }

    std::unique_ptr<ZQSwitch> m_view;
    ulong m_time = 100000;
};

void ZQSwitchClickTest::init()
{
    QApplication::setDoubleClickInterval(400);
    m_view = std::make_unique<ZQSwitch>();
    m_time += Slow;
}

void ZQSwitchClickTest::cleanup()
{
    m_view.reset();
}

bool ZQSwitchClickTest::send(QEvent::Type type, const QPointF &at, Qt::MouseButton button,
                             Qt::MouseButtons buttons)
{
    QMouseEvent event(type, at, QPointF(300, 300) + at, button, buttons, Qt::NoModifier);
    event.setTimestamp(m_time);
    QCoreApplication::sendEvent(m_view.get(), &event);
    return event.isAccepted();
}

void ZQSwitchClickTest::press(const QPointF &at, QEvent::Type type)
{
    m_time += Quick;
    send(type, at);
}

void ZQSwitchClickTest::release(const QPointF &at)
{
    send(QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton);
}

void ZQSwitchClickTest::click(const QPointF &at, QEvent::Type type)
{
    press(at, type);
    release(at);
}

void ZQSwitchClickTest::thePointOfAnEventCountsFromTheBottom()
{
    const QMouseEvent event(QEvent::MouseButtonPress, QPointF(7, 4), QPointF(107, 104),
                            Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCOMPARE(m_view->pointForEvent(event), QPointF(7, 20));
}

void ZQSwitchClickTest::theTopmostAndTheLowestRowAreInsideTheKnob()
{
    for (const qreal row : {0.0, 23.0, 23.9}) {
        press({20, row});
        QCOMPARE(m_view->buttonLayer()->currentEventState(), State::PressedKnob);
        m_time += Slow;
    }
    for (const qreal row : {-1.0, 24.0}) {
        press({20, row});
        QCOMPARE(m_view->buttonLayer()->currentEventState(), State::PressedBeside);
        m_time += Slow;
    }
}

void ZQSwitchClickTest::aClickToggles()
{
    click({20, 12});
    QVERIFY(m_view->isOn());
    QCOMPARE(knobX(), 48.0);
}

void ZQSwitchClickTest::aSlowSecondClickTogglesBack()
{
    click({20, 12});
    m_time += Slow;
    click({20, 12});
    QVERIFY(!m_view->isOn());
}

void ZQSwitchClickTest::ofADoubleClickOnlyTheFirstActs()
{
    QSignalSpy reports(m_view.get(), &ZQSwitch::onChanged);
    click({20, 12});
    const auto first = reports.size();
    click({20, 12}, QEvent::MouseButtonDblClick);
    QVERIFY(m_view->isOn());
    QCOMPARE(reports.size(), first);
}

void ZQSwitchClickTest::ofATripleClickOnlyTheFirstActs()
{
    click({20, 12});
    click({20, 12}, QEvent::MouseButtonDblClick);
    click({20, 12});
    QVERIFY(m_view->isOn());
    QCOMPARE(knobX(), 48.0);
}

void ZQSwitchClickTest::ofAQuadrupleClickOnlyTheFirstActs()
{
    click({20, 12});
    click({20, 12}, QEvent::MouseButtonDblClick);
    click({20, 12});
    click({20, 12}, QEvent::MouseButtonDblClick);
    QVERIFY(m_view->isOn());
    m_time += Slow;
    click({20, 12});
    QVERIFY(!m_view->isOn());
}

void ZQSwitchClickTest::twoQuickClicksApartBothAct()
{
    click({20, 12});
    click({70, 12});
    QVERIFY(!m_view->isOn());
}

void ZQSwitchClickTest::dragsAreHandedOnWhateverTheClickCount()
{
    click({20, 12});
    press({20, 12}, QEvent::MouseButtonDblClick);
    // As if the knob had been pressed, to see that the drag arrives.
    m_view->buttonLayer()->mouseDown({60, 12});
    drag({40, 12});
    QCOMPARE(knobX(), 28.0);
}

void ZQSwitchClickTest::theSecondPressOfADoubleClickCannotDrag()
{
    click({60, 12});
    press({60, 12}, QEvent::MouseButtonDblClick);
    drag({10, 12});
    QCOMPARE(knobX(), 48.0);
    release({10, 12});
    QVERIFY(m_view->isOn());
}

void ZQSwitchClickTest::aDragSetsTheValueByWhereTheKnobIs()
{
    press({20, 12});
    drag({44, 12});
    release({44, 12});
    QVERIFY(!m_view->isOn());
    m_time += Slow;
    press({20, 12});
    drag({44, 12});
    drag({45, 12});
    release({45, 12});
    QVERIFY(m_view->isOn());
}

void ZQSwitchClickTest::onlyTheLeftButtonActs()
{
    for (const auto button : {Qt::RightButton, Qt::MiddleButton}) {
        QVERIFY(!send(QEvent::MouseButtonPress, {20, 12}, button, button));
        QCOMPARE(m_view->buttonLayer()->currentEventState(), State::Idle);
        send(QEvent::MouseMove, {60, 12}, Qt::NoButton, button);
        QCOMPARE(knobX(), 0.0);
        QVERIFY(!send(QEvent::MouseButtonRelease, {60, 12}, button, Qt::NoButton));
        QVERIFY(!m_view->isOn());
    }
}

void ZQSwitchClickTest::aSecondButtonDoesNotEndTheDrag()
{
    press({20, 12});
    drag({50, 12});
    send(QEvent::MouseButtonPress, {50, 12}, Qt::RightButton, Qt::LeftButton | Qt::RightButton);
    send(QEvent::MouseButtonRelease, {50, 12}, Qt::RightButton, Qt::LeftButton);
    drag({55, 12});
    QCOMPARE(knobX(), 35.0);
    QCOMPARE(m_view->buttonLayer()->currentEventState(), State::Dragging);
}

void ZQSwitchClickTest::aDisabledSwitchIgnoresPressesAndDrags()
{
    m_view->setEnabled(false);
    press({20, 12});
    // It hears of them all the same, and the knob's rules decide.
    QCOMPARE(m_view->buttonLayer()->currentEventState(), State::PressedKnob);
    QCOMPARE(m_view->buttonLayer()->theSwitch()->contents(),
             m_view->buttonLayer()->disabledImgRef());
    drag({60, 12});
    QCOMPARE(m_view->buttonLayer()->currentEventState(), State::Dragging);
    QCOMPARE(knobX(), 0.0);
    release({60, 12});
    QVERIFY(!m_view->isOn());
    QCOMPARE(m_view->buttonLayer()->currentEventState(), State::Dragging);
    click({20, 12}, QEvent::MouseButtonDblClick);
    QVERIFY(!m_view->isOn());
}

void ZQSwitchClickTest::aReleaseOnADisabledSwitchReportsTheUnchangedValue()
{
    m_view->setEnabled(false);
    QSignalSpy reports(m_view.get(), &ZQSwitch::onChanged);
    click({20, 12});
    QCOMPARE(valuesOf(reports), (QList<bool>{false}));
}

void ZQSwitchClickTest::hidingTheSwitchPutsADraggedKnobBack()
{
    m_view->show();
    press({20, 12});
    drag({60, 12});
    QCOMPARE(knobX(), 40.0);
    m_view->hide();
    QCOMPARE(knobX(), 0.0);
    QCOMPARE(m_view->buttonLayer()->currentEventState(), State::Idle);
    drag({70, 12});
    release({70, 12}); // which belongs to the press that is over
    QVERIFY(!m_view->isOn());
    m_time += Slow;
    click({20, 12});
    QVERIFY(m_view->isOn());
}

void ZQSwitchClickTest::anotherWindowThatComesToTheFrontPutsADraggedKnobBack()
{
    QWidget window;
    m_view->setParent(&window);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    press({20, 12});
    drag({60, 12});
    QCOMPARE(knobX(), 40.0);
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QTRY_COMPARE(knobX(), 0.0);
    release({60, 12});
    QVERIFY(!m_view->isOn());
    m_view->setParent(nullptr);
}

void ZQSwitchClickTest::rightToLeftLayoutsDoNotMirrorIt()
{
    const QImage usual = m_view->grab().toImage();
    m_view->setLayoutDirection(Qt::RightToLeft);
    QCOMPARE(m_view->grab().toImage(), usual);
    press({20, 12});
    QCOMPARE(m_view->buttonLayer()->currentEventState(), State::PressedKnob);
}

TEST_CLASS(ZQSwitchClickTest, QApplication)
#include "ZQSwitchClickTest.moc"
