// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "KnobLayerFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QTest>

class ZQSwitchButtonDragTest : public KnobLayerFixture {
    Q_OBJECT
private Q_SLOTS:
    void init() { createLayer(); }
    void cleanup() { destroyLayer(); }

    void aDragThatBeganBesideTheKnobDoesNothing();
    void aDragMovesTheKnobByEachStep();
    void theSmallestMovementDrags();
    void aDragWithoutMovementIsNoClick();
    void aDragKeepsTheKnobsHeightAndSize();
    void onePointRightOfTheMiddleGivesOn();
    void exactlyOnTheMiddleGivesOff();
    void aKnobDraggedFromOnToTheMiddleGivesOff();
    void aDragThatKeepsTheValueSnapsBack();
    void aDragBeyondTheRightEndIsRefusedUntilThePointerIsBack();
    void aDragBeyondTheLeftEndIsRefusedUntilThePointerIsBack();
    void shouldDragRefusesOnlyMovementsBeyondTheEnds();
    void aHiddenLayerIsNotDragged();
    void aDraggedKnobFollowsWithoutAnimation();
    void whileDisabledADragIsRefused();
    void setOnDuringADragIsDecidedByTheKnobsPlace();
    void aCancelledDragPutsTheKnobBack();
};

void ZQSwitchButtonDragTest::aDragThatBeganBesideTheKnobDoesNothing()
{
    m_layer->mouseDown(OnKnobWhenOn);
    m_layer->mouseDragged(OnKnobWhenOff);
    m_layer->mouseDragged({80, 12});
    QCOMPARE(x(), 0.0);
    QCOMPARE(m_layer->currentEventState(), State::PressedBeside);
    QCOMPARE(m_layer->mouseDownPointForCurrentEvent(), OnKnobWhenOn);
    m_layer->mouseUp({80, 12});
    QVERIFY(m_layer->isOn());             // it is a click
    m_layer->mouseDragged(OnKnobWhenOff); // nor does one without a press
    QCOMPARE(x(), OnEnd);
}

void ZQSwitchButtonDragTest::aDragMovesTheKnobByEachStep()
{
    m_layer->mouseDown({10, 12});
    m_layer->mouseDragged({15, 30});
    QCOMPARE(x(), 5.0);
    QCOMPARE(m_layer->currentEventState(), State::Dragging);
    QCOMPARE(m_layer->mouseDownPointForCurrentEvent(), QPointF(15, 30));
    m_layer->mouseDragged({40, -9});
    QCOMPARE(x(), 30.0);
    m_layer->mouseDragged({38, 12});
    QCOMPARE(x(), 28.0);
    QVERIFY(!m_layer->isOn()); // the value is decided by the release
}

void ZQSwitchButtonDragTest::theSmallestMovementDrags()
{
    m_layer->mouseDown({10, 12});
    m_layer->mouseDragged({10.25, 12});
    QCOMPARE(x(), 0.25);
    m_layer->mouseUp({10.25, 12});
    QVERIFY(!m_layer->isOn()); // so it is no click
    QCOMPARE(x(), 0.0);
}

void ZQSwitchButtonDragTest::aDragWithoutMovementIsNoClick()
{
    m_layer->mouseDown({10, 12});
    m_layer->mouseDragged({10, 12});
    QCOMPARE(m_layer->currentEventState(), State::Dragging);
    m_layer->mouseUp({10, 12});
    QVERIFY(!m_layer->isOn());
}

void ZQSwitchButtonDragTest::aDragKeepsTheKnobsHeightAndSize()
{
    m_layer->mouseDown({10, 12});
    m_layer->mouseDragged({25, 20});
    QCOMPARE(m_layer->theSwitch()->frame(), QRectF(15, 0, 40, Height));
}

void ZQSwitchButtonDragTest::onePointRightOfTheMiddleGivesOn()
{
    dragKnobTo(25); // its centre is at 45 of 88
    m_layer->mouseUp({0, 0});
    QVERIFY(m_layer->isOn());
    QCOMPARE(x(), OnEnd);
}

void ZQSwitchButtonDragTest::exactlyOnTheMiddleGivesOff()
{
    dragKnobTo(24);
    m_layer->mouseUp({80, 12});
    QVERIFY(!m_layer->isOn());
    QCOMPARE(x(), 0.0);
}

void ZQSwitchButtonDragTest::aKnobDraggedFromOnToTheMiddleGivesOff()
{
    m_layer->setOn(true);
    dragKnobTo(24);
    m_layer->mouseUp({0, 0});
    QVERIFY(!m_layer->isOn());
    QCOMPARE(x(), 0.0);
}

void ZQSwitchButtonDragTest::aDragThatKeepsTheValueSnapsBack()
{
    m_layer->setOn(true);
    dragKnobTo(25);
    m_layer->mouseUp({0, 0});
    QVERIFY(m_layer->isOn());
    QCOMPARE(x(), OnEnd);
    QCOMPARE(m_layer->currentEventState(), State::Idle);
}

void ZQSwitchButtonDragTest::aDragBeyondTheRightEndIsRefusedUntilThePointerIsBack()
{
    m_layer->mouseDown({10, 12});
    m_layer->mouseDragged({70, 12}); // 12 points more than there is way
    QCOMPARE(x(), OnEnd);
    QCOMPARE(m_layer->mouseDownPointForCurrentEvent(), QPointF(70, 12));
    m_layer->mouseDragged({90, 12});
    QCOMPARE(x(), OnEnd);
    QCOMPARE(m_layer->mouseDownPointForCurrentEvent(), QPointF(70, 12));
    m_layer->mouseDragged({80, 12}); // back, but still right of the last accepted point
    QCOMPARE(x(), OnEnd);
    QCOMPARE(m_layer->mouseDownPointForCurrentEvent(), QPointF(70, 12));
    m_layer->mouseDragged({69, 12});
    QCOMPARE(x(), OnEnd - 1);
}

void ZQSwitchButtonDragTest::aDragBeyondTheLeftEndIsRefusedUntilThePointerIsBack()
{
    m_layer->setOn(true);
    m_layer->mouseDown({60, 12});
    m_layer->mouseDragged({2, 12});
    QCOMPARE(x(), 0.0);
    m_layer->mouseDragged({-30, 12});
    m_layer->mouseDragged({1, 12});
    QCOMPARE(x(), 0.0);
    QCOMPARE(m_layer->mouseDownPointForCurrentEvent(), QPointF(2, 12));
    m_layer->mouseDragged({5, 12});
    QCOMPARE(x(), 3.0);
}

void ZQSwitchButtonDragTest::shouldDragRefusesOnlyMovementsBeyondTheEnds()
{
    QVERIFY(!m_layer->shouldDrag(-0.01));
    QVERIFY(m_layer->shouldDrag(0));
    QVERIFY(m_layer->shouldDrag(0.01));
    dragKnobTo(20);
    QVERIFY(m_layer->shouldDrag(-1));
    QVERIFY(m_layer->shouldDrag(0));
    QVERIFY(m_layer->shouldDrag(1));
    m_layer->mouseDragged({500, 12});
    QVERIFY(m_layer->shouldDrag(-0.01));
    QVERIFY(m_layer->shouldDrag(0));
    QVERIFY(!m_layer->shouldDrag(0.01));
    m_layer->setEnabled(false);
    QVERIFY(!m_layer->shouldDrag(-1));
    QVERIFY(!m_layer->shouldDrag(0));
}

void ZQSwitchButtonDragTest::aHiddenLayerIsNotDragged()
{
    m_layer->setHidden(true);
    m_layer->mouseDown({10, 12});
    m_layer->mouseDragged({50, 12});
    QCOMPARE(x(), 0.0);
    QCOMPARE(m_layer->mouseDownPointForCurrentEvent(), QPointF(10, 12));
    QCOMPARE(m_layer->currentEventState(), State::Dragging);
    m_layer->mouseUp({50, 12});
    QVERIFY(!m_layer->isOn());
}

void ZQSwitchButtonDragTest::aDraggedKnobFollowsWithoutAnimation()
{
    m_layer->setHost(&m_host);
    dragKnobTo(17);
    QCOMPARE(m_layer->theSwitch()->presentationFrame().x(), 17.0);
}

void ZQSwitchButtonDragTest::whileDisabledADragIsRefused()
{
    m_layer->setEnabled(false);
    m_layer->mouseDown({10, 12});
    m_layer->mouseDragged({40, 12});
    QCOMPARE(x(), 0.0);
    QCOMPARE(m_layer->mouseDownPointForCurrentEvent(), QPointF(10, 12));
    QCOMPARE(m_layer->currentEventState(), State::Dragging);
}

void ZQSwitchButtonDragTest::setOnDuringADragIsDecidedByTheKnobsPlace()
{
    dragKnobTo(3);
    m_layer->setOn(true);
    QVERIFY(!m_layer->isOn());
    QCOMPARE(x(), 0.0);
    QCOMPARE(m_layer->currentEventState(), State::Idle);
    m_layer->mouseDragged({60, 12}); // the drag is over
    QCOMPARE(x(), 0.0);
}

void ZQSwitchButtonDragTest::aCancelledDragPutsTheKnobBack()
{
    dragKnobTo(40);
    m_layer->cancelPress();
    QCOMPARE(x(), 0.0);
    m_layer->setOn(true);
    dragKnobTo(5);
    m_layer->cancelPress();
    QCOMPARE(x(), OnEnd);
    QVERIFY(m_layer->isOn());
}

TEST_CLASS(ZQSwitchButtonDragTest, QApplication)
#include "ZQSwitchButtonDragTest.moc"
