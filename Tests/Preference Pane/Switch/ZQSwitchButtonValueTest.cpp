// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "KnobLayerFixture.h"
#include "Preference Pane/Switch/LayerTransaction.h"
#include "ReportedValues.h"
#include "Tests/Support/HandDrivenAnimations.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

using namespace std::chrono_literals;
using platform::LayerTransaction;

class ZQSwitchButtonValueTest : public KnobLayerFixture {
    Q_OBJECT
private Q_SLOTS:
    void init() { createLayer(); }
    void cleanup() { destroyLayer(); }

    void whileDisabledSetOnStoresTheValueButTheKnobStays();
    void afterThatAClickBringsTheKnobToTheValue();
    void afterThatTheKnobsPlaceOutweighsTheNextSetOn();
    void setOnMovesTheKnob();
    void everySetOnReports();
    void aReleaseReportsOnceMore();
    void aReleaseWhileDisabledReportsTheUnchangedValue();
    void withoutAnimationTheKnobIsThereAtOnce();
    void withAnimationTheKnobSlides();
    void aReleaseSnapsForTheDurationOfAnEnclosingTransaction();
};

void ZQSwitchButtonValueTest::whileDisabledSetOnStoresTheValueButTheKnobStays()
{
    m_layer->setEnabled(false);
    m_layer->setOn(true);
    QVERIFY(m_layer->isOn());
    QCOMPARE(x(), 0.0);
    m_layer->setOn(false, Animated::No);
    QVERIFY(!m_layer->isOn());
    m_layer->setOn(true, Animated::Yes);
    QVERIFY(m_layer->isOn());
    QCOMPARE(x(), 0.0);
}

void ZQSwitchButtonValueTest::afterThatAClickBringsTheKnobToTheValue()
{
    m_layer->setEnabled(false);
    m_layer->setOn(true);
    m_layer->setEnabled(true);
    QCOMPARE(x(), 0.0);
    m_layer->mouseDown(Middle);
    m_layer->mouseUp(Middle);
    QVERIFY(m_layer->isOn());
    QCOMPARE(x(), OnEnd);
}

void ZQSwitchButtonValueTest::afterThatTheKnobsPlaceOutweighsTheNextSetOn()
{
    m_layer->setEnabled(false);
    m_layer->setOn(true);
    m_layer->setEnabled(true);
    QSignalSpy reports(m_layer.get(), &ZQSwitchButtonCALayer::onChanged);
    m_layer->setOn(false);
    QVERIFY(m_layer->isOn()); // at x = 0 the confirming step answers on
    QCOMPARE(x(), OnEnd);
    QCOMPARE(reports.size(), 3);
}

void ZQSwitchButtonValueTest::setOnMovesTheKnob()
{
    m_layer->setOn(true);
    QCOMPARE(x(), OnEnd);
    QCOMPARE(m_layer->currentEventState(), State::Idle);
    m_layer->setOn(false);
    QCOMPARE(x(), 0.0);
}

void ZQSwitchButtonValueTest::everySetOnReports()
{
    QSignalSpy reports(m_layer.get(), &ZQSwitchButtonCALayer::onChanged);
    m_layer->setOn(true);
    // The inner one confirms the value, then the outer one ends.
    QCOMPARE(valuesOf(reports), (QList<bool>{true, true}));
    reports.clear();
    m_layer->setOn(true);
    QCOMPARE(valuesOf(reports), (QList<bool>{true}));
    reports.clear();
    m_layer->setOn(false, Animated::No);
    QCOMPARE(valuesOf(reports), (QList<bool>{false, false}));
}

void ZQSwitchButtonValueTest::aReleaseReportsOnceMore()
{
    QSignalSpy reports(m_layer.get(), &ZQSwitchButtonCALayer::onChanged);
    m_layer->mouseDown(OnKnobWhenOff);
    QCOMPARE(reports.size(), 0);
    m_layer->mouseUp(OnKnobWhenOff);
    QCOMPARE(valuesOf(reports), (QList<bool>{true, true, true}));
    reports.clear();
    dragKnobTo(40);
    m_layer->mouseUp({0, 0}); // still on
    QCOMPARE(valuesOf(reports), (QList<bool>{true, true}));
}

void ZQSwitchButtonValueTest::aReleaseWhileDisabledReportsTheUnchangedValue()
{
    m_layer->setEnabled(false);
    QSignalSpy reports(m_layer.get(), &ZQSwitchButtonCALayer::onChanged);
    m_layer->mouseDown(OnKnobWhenOff);
    m_layer->mouseUp(OnKnobWhenOff);
    QCOMPARE(valuesOf(reports), (QList<bool>{false}));
}

void ZQSwitchButtonValueTest::withoutAnimationTheKnobIsThereAtOnce()
{
    m_layer->setHost(&m_host);
    m_layer->setOn(true, Animated::No);
    QCOMPARE(m_layer->theSwitch()->presentationFrame().x(), OnEnd);
    m_layer->setOn(false, Animated::Yes);
    QCOMPARE(m_layer->theSwitch()->presentationFrame().x(), OnEnd);
    m_layer->setOn(true, Animated::No); // while it slides
    QCOMPARE(m_layer->theSwitch()->presentationFrame().x(), OnEnd);
    QVERIFY(!LayerTransaction::animationDuration());
}

void ZQSwitchButtonValueTest::withAnimationTheKnobSlides()
{
    HandDrivenAnimations time;
    m_layer->setHost(&m_host);
    m_layer->setOn(true, Animated::Yes);
    QCOMPARE(x(), OnEnd);
    QCOMPARE(m_layer->theSwitch()->presentationFrame().x(), 0.0);
    time.pass(100);
    const qreal shown = m_layer->theSwitch()->presentationFrame().x();
    QVERIFY(shown > 0 && shown < OnEnd);
    time.pass(149);
    QVERIFY(m_layer->theSwitch()->presentationFrame().x() < OnEnd);
    time.pass(1);
    QCOMPARE(m_layer->theSwitch()->presentationFrame().x(), OnEnd);
}

void ZQSwitchButtonValueTest::aReleaseSnapsForTheDurationOfAnEnclosingTransaction()
{
    HandDrivenAnimations time;
    m_layer->setHost(&m_host);
    {
        const LayerTransaction slow(2000ms);
        m_layer->mouseUp(Middle);
    }
    time.pass(1900);
    QVERIFY(m_layer->theSwitch()->presentationFrame().x() < OnEnd);
    m_layer->mouseUp(Middle);
    time.pass(250);
    QCOMPARE(m_layer->theSwitch()->presentationFrame().x(), 0.0);
}

TEST_CLASS(ZQSwitchButtonValueTest, QApplication)
#include "ZQSwitchButtonValueTest.moc"
