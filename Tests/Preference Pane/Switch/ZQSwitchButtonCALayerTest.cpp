// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "KnobLayerFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

using platform::Layer;

class ZQSwitchButtonCALayerTest : public KnobLayerFixture {
    Q_OBJECT
private Q_SLOTS:
    void init() { createLayer(); }
    void cleanup() { destroyLayer(); }

    void itIsCreatedTwentyPointsSquareOffIdleAndEnabled();
    void theKnobIsTwiceAsWideAsTheLayerIsHighAtCreation();
    void itFillsItsSuperlayer();
    void theKnobFollowsTheHeightButNotTheWidth();
    void aKnobAtAnEndStaysThereWhenTheWidthChanges();
    void aKnobInTheMiddleStaysOnTheTrackWhenTheWidthShrinks();
    void aPressInTheKnobsFrameIsOnTheKnob_data();
    void aPressInTheKnobsFrameIsOnTheKnob();
    void aPressRemembersItsPoint();
    void aPressOnTheKnobShowsThePressedFace();
    void aPressBesideTheKnobLeavesItsFace();
    void aReleaseShowsTheNormalFaceAndIsIdle();
    void aClickTogglesWhereverItLands_data();
    void aClickTogglesWhereverItLands();
    void aReleaseWithoutAPressTogglesToo();
    void whileDisabledAPressShowsTheDisabledFace();
    void whileDisabledAReleaseLeavesStateValueAndKnob();
    void theNextPressSetsTheStateAfresh();
    void enablingShowsThePressedFaceUntilTheNextRelease();
    void disablingShowsTheDisabledFaceUntilTheNextRelease();
    void aCancelledPressTogglesNothing();
    void cancellingWhileIdleLeavesTheFace();
};

void ZQSwitchButtonCALayerTest::itIsCreatedTwentyPointsSquareOffIdleAndEnabled()
{
    const ZQSwitchButtonCALayer layer;
    QCOMPARE(layer.bounds(), QRectF(0, 0, 20, 20));
    QCOMPARE(layer.cornerRadius(), 5.0);
    QCOMPARE(layer.borderWidth(), 0.0);
    QCOMPARE(static_cast<int>(layer.autoresizingMask()), 2);
    QVERIFY(!layer.isOn());
    QVERIFY(layer.enabled());
    QCOMPARE(static_cast<qint32>(layer.currentEventState()), 2);
    QCOMPARE(layer.theSwitch()->contents(), layer.notClickedImgRef());
}

void ZQSwitchButtonCALayerTest::theKnobIsTwiceAsWideAsTheLayerIsHighAtCreation()
{
    const ZQSwitchButtonCALayer layer;
    QCOMPARE(layer.theSwitch()->frame(), QRectF(0, 0, 40, 20));
    QCOMPARE(layer.theSwitch()->cornerRadius(), 5.0);
    QCOMPARE(layer.theSwitch()->borderWidth(), 0.5);
    QCOMPARE(layer.theSwitch()->superlayer(), &layer);
}

void ZQSwitchButtonCALayerTest::itFillsItsSuperlayer()
{
    Layer container;
    container.setBounds({0, 0, 120, 30});
    container.setLayoutManager(Layer::LayoutManager::Constraints);
    const auto layer = std::make_shared<ZQSwitchButtonCALayer>();
    container.addSublayer(layer);
    container.layoutSublayers();
    QCOMPARE(layer->frame(), QRectF(0, 0, 120, 30));
    container.setBounds({0, 0, 90, 22});
    QCOMPARE(layer->frame(), QRectF(0, 0, 90, 22));
}

void ZQSwitchButtonCALayerTest::theKnobFollowsTheHeightButNotTheWidth()
{
    QCOMPARE(m_layer->theSwitch()->frame(), QRectF(0, 0, 40, Height));
    m_layer->setFrame({0, 0, 200, 31});
    QCOMPARE(m_layer->theSwitch()->frame(), QRectF(0, 0, 40, 31));
}

void ZQSwitchButtonCALayerTest::aKnobAtAnEndStaysThereWhenTheWidthChanges()
{
    m_layer->setFrame({0, 0, 100, Height});
    QCOMPARE(x(), 0.0);
    m_layer->setOn(true);
    QCOMPARE(x(), 60.0);
    m_layer->setFrame({0, 0, 200, Height});
    QCOMPARE(x(), 160.0);
    m_layer->setFrame({0, 0, 40, Height}); // as wide as the knob: both ends are one
    m_layer->setFrame({0, 0, 70, Height});
    QCOMPARE(x(), 30.0);
    QVERIFY(m_layer->isOn());
}

void ZQSwitchButtonCALayerTest::aKnobInTheMiddleStaysOnTheTrackWhenTheWidthShrinks()
{
    dragKnobTo(30);
    m_layer->setFrame({0, 0, 60, Height});
    QCOMPARE(x(), 20.0);
    QCOMPARE(m_layer->currentEventState(), State::Dragging);
}

void ZQSwitchButtonCALayerTest::aPressInTheKnobsFrameIsOnTheKnob_data()
{
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<int>("state");
    QTest::newRow("the middle") << QPointF(20, 12) << 8;
    QTest::newRow("the bottom left corner") << QPointF(0, 0) << 8;
    QTest::newRow("just left of the right edge") << QPointF(39.99, 12) << 8;
    QTest::newRow("the right edge") << QPointF(40, 12) << 4;
    QTest::newRow("just below the top edge") << QPointF(20, 23.99) << 8;
    QTest::newRow("the top edge") << QPointF(20, 24) << 4;
    QTest::newRow("below") << QPointF(20, -0.01) << 4;
    QTest::newRow("left of it") << QPointF(-0.01, 12) << 4;
    QTest::newRow("the track") << QPointF(70, 12) << 4;
}

void ZQSwitchButtonCALayerTest::aPressInTheKnobsFrameIsOnTheKnob()
{
    QFETCH(QPointF, point);
    QFETCH(int, state);
    m_layer->mouseDown(point);
    QCOMPARE(static_cast<int>(m_layer->currentEventState()), state);
}

void ZQSwitchButtonCALayerTest::aPressRemembersItsPoint()
{
    m_layer->mouseDown({70, 3});
    QCOMPARE(m_layer->mouseDownPointForCurrentEvent(), QPointF(70, 3));
    m_layer->mouseDown({7, 4});
    QCOMPARE(m_layer->mouseDownPointForCurrentEvent(), QPointF(7, 4));
}

void ZQSwitchButtonCALayerTest::aPressOnTheKnobShowsThePressedFace()
{
    m_layer->mouseDown(OnKnobWhenOff);
    QCOMPARE(face(), m_layer->clickedImgRef());
    QVERIFY(face() != m_layer->notClickedImgRef());
}

void ZQSwitchButtonCALayerTest::aPressBesideTheKnobLeavesItsFace()
{
    m_layer->mouseDown(OnKnobWhenOn);
    QCOMPARE(face(), m_layer->notClickedImgRef());
}

void ZQSwitchButtonCALayerTest::aReleaseShowsTheNormalFaceAndIsIdle()
{
    for (const auto &point : {OnKnobWhenOff, Middle, OnKnobWhenOn}) {
        m_layer->mouseDown(point);
        m_layer->mouseUp(point);
        QCOMPARE(face(), m_layer->notClickedImgRef());
        QCOMPARE(m_layer->currentEventState(), State::Idle);
    }
    dragKnobTo(10);
    m_layer->mouseUp({30, 12});
    QCOMPARE(face(), m_layer->notClickedImgRef());
    QCOMPARE(m_layer->currentEventState(), State::Idle);
}

void ZQSwitchButtonCALayerTest::aClickTogglesWhereverItLands_data()
{
    QTest::addColumn<bool>("on");
    QTest::addColumn<QPointF>("point");
    QTest::newRow("off, on the knob") << false << OnKnobWhenOff;
    QTest::newRow("off, beside it") << false << OnKnobWhenOn;
    QTest::newRow("on, on the knob") << true << OnKnobWhenOn;
    QTest::newRow("on, beside it") << true << OnKnobWhenOff;
}

void ZQSwitchButtonCALayerTest::aClickTogglesWhereverItLands()
{
    QFETCH(bool, on);
    QFETCH(QPointF, point);
    m_layer->setOn(on);
    m_layer->mouseDown(point);
    m_layer->mouseUp(point);
    QCOMPARE(m_layer->isOn(), !on);
    QCOMPARE(x(), on ? 0.0 : OnEnd);
}

void ZQSwitchButtonCALayerTest::aReleaseWithoutAPressTogglesToo()
{
    m_layer->mouseUp({0, 0});
    QVERIFY(m_layer->isOn());
    QCOMPARE(x(), OnEnd);
    QCOMPARE(m_layer->currentEventState(), State::Idle);
}

void ZQSwitchButtonCALayerTest::whileDisabledAPressShowsTheDisabledFace()
{
    m_layer->setEnabled(false);
    m_layer->mouseDown(OnKnobWhenOff);
    QCOMPARE(m_layer->currentEventState(), State::PressedKnob);
    QCOMPARE(face(), m_layer->disabledImgRef());
    m_layer->mouseUp(OnKnobWhenOff);
    QCOMPARE(face(), m_layer->disabledImgRef());
}

void ZQSwitchButtonCALayerTest::whileDisabledAReleaseLeavesStateValueAndKnob()
{
    m_layer->setEnabled(false);
    m_layer->mouseDown(OnKnobWhenOff);
    m_layer->mouseUp(OnKnobWhenOff);
    QCOMPARE(m_layer->currentEventState(), State::PressedKnob);
    QVERIFY(!m_layer->isOn());
    QCOMPARE(x(), 0.0);
    m_layer->mouseDown(OnKnobWhenOn);
    m_layer->mouseUp(OnKnobWhenOn);
    QCOMPARE(m_layer->currentEventState(), State::PressedBeside);
    QVERIFY(!m_layer->isOn());
}

void ZQSwitchButtonCALayerTest::theNextPressSetsTheStateAfresh()
{
    dragKnobTo(30);
    m_layer->setEnabled(false);
    m_layer->mouseUp({50, 12});
    QCOMPARE(m_layer->currentEventState(), State::Dragging);
    QCOMPARE(x(), 30.0);
    m_layer->setEnabled(true);
    m_layer->mouseDown({80, 12});
    QCOMPARE(m_layer->currentEventState(), State::PressedBeside);
    m_layer->mouseUp({80, 12});
    QVERIFY(!m_layer->isOn()); // x was not 0, so the click gives off
    QCOMPARE(x(), 0.0);
}

void ZQSwitchButtonCALayerTest::enablingShowsThePressedFaceUntilTheNextRelease()
{
    m_layer->setEnabled(false);
    m_layer->setEnabled(true);
    QCOMPARE(face(), m_layer->clickedImgRef());
    m_layer->setOn(true);
    QCOMPARE(face(), m_layer->clickedImgRef());
    m_layer->mouseUp(Middle);
    QCOMPARE(face(), m_layer->notClickedImgRef());
    m_layer->setEnabled(true); // also where it is enabled already
    QCOMPARE(face(), m_layer->clickedImgRef());
}

void ZQSwitchButtonCALayerTest::disablingShowsTheDisabledFaceUntilTheNextRelease()
{
    m_layer->setEnabled(false);
    QVERIFY(!m_layer->enabled());
    QCOMPARE(face(), m_layer->disabledImgRef());
    m_layer->mouseDown(Middle);
    m_layer->mouseUp(Middle);
    QCOMPARE(face(), m_layer->disabledImgRef());
}

void ZQSwitchButtonCALayerTest::aCancelledPressTogglesNothing()
{
    QSignalSpy reports(m_layer.get(), &ZQSwitchButtonCALayer::onChanged);
    m_layer->mouseDown(OnKnobWhenOff);
    m_layer->cancelPress();
    QCOMPARE(face(), m_layer->notClickedImgRef());
    QCOMPARE(m_layer->currentEventState(), State::Idle);
    QCOMPARE(reports.size(), 0);
    QVERIFY(!m_layer->isOn());
}

void ZQSwitchButtonCALayerTest::cancellingWhileIdleLeavesTheFace()
{
    m_layer->setEnabled(true);
    m_layer->cancelPress();
    QCOMPARE(face(), m_layer->clickedImgRef());
}

TEST_CLASS(ZQSwitchButtonCALayerTest, QApplication)
#include "ZQSwitchButtonCALayerTest.moc"
