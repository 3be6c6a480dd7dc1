// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ClickCounter.h"

#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTest>

using platform::ClickCounter;

class ClickCounterTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void noPressCountsNothing();
    void quickPressesInOnePlaceCountUp();
    void aPressAfterTheIntervalBeginsAnew();
    void aPressElsewhereBeginsAnew();
    void aDoubleClickCountsTwoWhereItsFirstPressWentElsewhere();
    void theDisplaysTimeCountsNotTheTimeOfHandling();
    void eventsWithoutATimeHappenWhenTheyAreHandled();

private:
    void press(ulong time, const QPoint &at = {100, 100},
               QEvent::Type type = QEvent::MouseButtonPress);

    ClickCounter m_counter;
};

void ClickCounterTest::init()
{
    m_counter = ClickCounter();
    QApplication::setDoubleClickInterval(400);
    QApplication::setStartDragDistance(10);
}

void ClickCounterTest::press(ulong time, const QPoint &at, QEvent::Type type)
{
    QMouseEvent event(type, QPointF(1, 1), QPointF(at), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    event.setTimestamp(time);
    m_counter.press(event);
}

void ClickCounterTest::noPressCountsNothing()
{
    QCOMPARE(m_counter.clickCount(), 0);
}

void ClickCounterTest::quickPressesInOnePlaceCountUp()
{
    // As the desktop delivers them: every second one is called a double-click.
    press(1000);
    QCOMPARE(m_counter.clickCount(), 1);
    press(1200, {103, 101}, QEvent::MouseButtonDblClick);
    QCOMPARE(m_counter.clickCount(), 2);
    press(1400);
    QCOMPARE(m_counter.clickCount(), 3);
    press(1800, {100, 100}, QEvent::MouseButtonDblClick);
    QCOMPARE(m_counter.clickCount(), 4);
    press(1900);
    QCOMPARE(m_counter.clickCount(), 5);
}

void ClickCounterTest::aPressAfterTheIntervalBeginsAnew()
{
    press(1000);
    press(1401);
    QCOMPARE(m_counter.clickCount(), 1);
    press(1500);
    QCOMPARE(m_counter.clickCount(), 2);
    press(2500);
    QCOMPARE(m_counter.clickCount(), 1);
}

void ClickCounterTest::aPressElsewhereBeginsAnew()
{
    press(1000);
    press(1100, {110, 100});
    QCOMPARE(m_counter.clickCount(), 1);
    press(1200, {115, 104});
    QCOMPARE(m_counter.clickCount(), 2);
}

void ClickCounterTest::aDoubleClickCountsTwoWhereItsFirstPressWentElsewhere()
{
    press(1000, {100, 100}, QEvent::MouseButtonDblClick);
    QCOMPARE(m_counter.clickCount(), 2);
    press(9000, {100, 100}, QEvent::MouseButtonDblClick);
    QCOMPARE(m_counter.clickCount(), 2);
}

void ClickCounterTest::theDisplaysTimeCountsNotTheTimeOfHandling()
{
    press(1000);
    press(2000); // handled in the same moment, as after a pause of the main thread
    QCOMPARE(m_counter.clickCount(), 1);
    press(500); // the display's clock has started over
    QCOMPARE(m_counter.clickCount(), 1);
}

void ClickCounterTest::eventsWithoutATimeHappenWhenTheyAreHandled()
{
    QApplication::setDoubleClickInterval(60000);
    press(0);
    press(0);
    QCOMPARE(m_counter.clickCount(), 2);
    QApplication::setDoubleClickInterval(10);
    QTest::qWait(30);
    press(0);
    QCOMPARE(m_counter.clickCount(), 1);
}

TEST_CLASS(ClickCounterTest, QApplication)
#include "ClickCounterTest.moc"
