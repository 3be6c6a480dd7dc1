// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ZQSwitch.h"
#include "ReportedValues.h"
#include "Tests/Support/TestProgram.h"
#include "Tests/Support/XPointer.h"

#include <QApplication>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

// A real pointer in a real X server.
class ZQSwitchMouseTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void aClickOnTheKnobToggles();
    void aClickBesideTheKnobToggles();
    void aClickOnTheTopmostRowIsOnTheKnob();
    void aDragToOnePointPastTheMiddleGivesOn();
    void aDragExactlyToTheMiddleGivesOff();
    void aDragBeyondTheRightEndWaitsForThePointerToComeBack();
    void aDragBeyondTheLeftEndOutsideTheWindowKeepsTheKnobAtTheEnd();
    void aDragBesideTheKnobIsAClick();
    void aDoubleClickTogglesOnce();
    void aTripleClickTogglesOnce();
    void twoSlowClicksToggleTwice();
    void theRightButtonDoesNothing();
    void aDisabledSwitchIgnoresPressesAndDrags();
    void aHiddenKnobLayerIsNotDraggedButToggles();
    void theKnobSlidesAfterAClick();
    void thePointerMeansTheSamePointsAtEveryScale();
    void everyPixelCountsAtScaleTwo();

private:
    static QByteArray ownRun(const QString &scale, const QStringList &functions);
    qreal knobX() const { return m_view->buttonLayer()->theSwitch()->frame().x(); }

    std::unique_ptr<QWidget> m_window;
    ZQSwitch *m_view = nullptr;
    std::unique_ptr<XPointer> m_pointer;
};

void ZQSwitchMouseTest::init()
{
    QApplication::setDoubleClickInterval(0); // clicks of different tests are no double-clicks
    m_window = std::make_unique<QWidget>();
    m_window->setGeometry(100, 100, 200, 80);
    m_view = new ZQSwitch(m_window.get());
    m_view->move(50, 30);
    m_pointer = std::make_unique<XPointer>(*m_view);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QTRY_COMPARE(m_window->pos(), QPoint(100, 100));
}

void ZQSwitchMouseTest::cleanup()
{
    m_pointer.reset();
    m_window.reset();
}

void ZQSwitchMouseTest::aClickOnTheKnobToggles()
{
    QVERIFY(m_pointer->click({20, 12}));
    QVERIFY(m_view->isOn());
    QVERIFY(m_pointer->click({70, 12}));
    QVERIFY(!m_view->isOn());
    QCOMPARE(m_pointer->presses(), 2);
}

void ZQSwitchMouseTest::aClickBesideTheKnobToggles()
{
    QVERIFY(m_pointer->click({70, 12}));
    QVERIFY(m_view->isOn());
    QVERIFY(m_pointer->click({10, 12}));
    QVERIFY(!m_view->isOn());
}

void ZQSwitchMouseTest::aClickOnTheTopmostRowIsOnTheKnob()
{
    QVERIFY(m_pointer->moveTo({20, 0}));
    QVERIFY(m_pointer->press());
    QCOMPARE(m_view->buttonLayer()->currentEventState(),
             ZQSwitchButtonCALayer::EventState::PressedKnob);
    QVERIFY(m_pointer->release());
    QVERIFY(m_view->isOn());
}

void ZQSwitchMouseTest::aDragToOnePointPastTheMiddleGivesOn()
{
    QVERIFY(m_pointer->moveTo({10, 12}));
    QVERIFY(m_pointer->press());
    QVERIFY(m_pointer->moveTo({35, 20}));
    QCOMPARE(knobX(), 25.0);
    QVERIFY(!m_view->isOn());
    QVERIFY(m_pointer->release());
    QVERIFY(m_view->isOn());
    QCOMPARE(knobX(), 48.0);
}

void ZQSwitchMouseTest::aDragExactlyToTheMiddleGivesOff()
{
    QVERIFY(m_pointer->moveTo({10, 12}));
    QVERIFY(m_pointer->press());
    QVERIFY(m_pointer->moveTo({34, 12}));
    QCOMPARE(knobX(), 24.0);
    QVERIFY(m_pointer->release());
    QVERIFY(!m_view->isOn());
    QCOMPARE(knobX(), 0.0);
}

void ZQSwitchMouseTest::aDragBeyondTheRightEndWaitsForThePointerToComeBack()
{
    QVERIFY(m_pointer->moveTo({10, 12}));
    QVERIFY(m_pointer->press());
    QVERIFY(m_pointer->moveTo({70, 12}));
    QCOMPARE(knobX(), 48.0);
    QVERIFY(m_pointer->moveTo({140, 12})); // outside the switch
    QVERIFY(m_pointer->moveTo({75, 12}));
    QCOMPARE(knobX(), 48.0);
    QVERIFY(m_pointer->moveTo({60, 12}));
    QCOMPARE(knobX(), 38.0);
    QVERIFY(m_pointer->release());
    QVERIFY(m_view->isOn());
}

void ZQSwitchMouseTest::aDragBeyondTheLeftEndOutsideTheWindowKeepsTheKnobAtTheEnd()
{
    m_view->setOn(true, Animated::No);
    QVERIFY(m_pointer->moveTo({60, 12}));
    QVERIFY(m_pointer->press());
    QVERIFY(m_pointer->moveTo({-140, 300}));
    QCOMPARE(knobX(), 0.0);
    QVERIFY(m_pointer->release());
    QVERIFY(!m_view->isOn());
    QCOMPARE(knobX(), 0.0);
}

void ZQSwitchMouseTest::aDragBesideTheKnobIsAClick()
{
    QVERIFY(m_pointer->moveTo({80, 12}));
    QVERIFY(m_pointer->press());
    QVERIFY(m_pointer->moveTo({50, 12}));
    QCOMPARE(knobX(), 0.0);
    QVERIFY(m_pointer->release());
    QVERIFY(m_view->isOn());
}

void ZQSwitchMouseTest::aDoubleClickTogglesOnce()
{
    QApplication::setDoubleClickInterval(20000);
    QVERIFY(m_pointer->click({20, 12}, 2));
    QCOMPARE(m_pointer->presses(), 2);
    QVERIFY(m_view->isOn());
    QCOMPARE(knobX(), 48.0);
}

void ZQSwitchMouseTest::aTripleClickTogglesOnce()
{
    QApplication::setDoubleClickInterval(20000);
    QVERIFY(m_pointer->click({20, 12}, 3));
    QCOMPARE(m_pointer->presses(), 3);
    QVERIFY(m_view->isOn());
    QCOMPARE(knobX(), 48.0);
}

void ZQSwitchMouseTest::twoSlowClicksToggleTwice()
{
    QApplication::setDoubleClickInterval(100);
    QVERIFY(m_pointer->click({20, 12}));
    QTest::qWait(400);
    QVERIFY(m_pointer->click({20, 12}));
    QVERIFY(!m_view->isOn());
}

void ZQSwitchMouseTest::theRightButtonDoesNothing()
{
    QSignalSpy reports(m_view, &ZQSwitch::onChanged);
    QVERIFY(m_pointer->moveTo({20, 12}));
    QVERIFY(m_pointer->press(3));
    QVERIFY(m_pointer->moveTo({60, 12}));
    QVERIFY(m_pointer->release(3));
    QVERIFY(!m_view->isOn());
    QCOMPARE(knobX(), 0.0);
    QCOMPARE(reports.size(), 0);
}

void ZQSwitchMouseTest::aDisabledSwitchIgnoresPressesAndDrags()
{
    m_view->setOn(true, Animated::No);
    m_view->setEnabled(false);
    QSignalSpy reports(m_view, &ZQSwitch::onChanged);
    QVERIFY(m_pointer->moveTo({60, 12}));
    QVERIFY(m_pointer->press());
    QVERIFY(m_pointer->moveTo({20, 12}));
    QCOMPARE(knobX(), 48.0);
    QVERIFY(m_pointer->release());
    QVERIFY(m_view->isOn());
    QCOMPARE(m_view->buttonLayer()->theSwitch()->contents(),
             m_view->buttonLayer()->disabledImgRef());
    QCOMPARE(valuesOf(reports), (QList<bool>{true})); // of the release
    QVERIFY(m_pointer->click({10, 12}));
    QVERIFY(m_view->isOn());
}

void ZQSwitchMouseTest::aHiddenKnobLayerIsNotDraggedButToggles()
{
    m_view->buttonLayer()->setHidden(true);
    QVERIFY(m_pointer->moveTo({20, 12}));
    QVERIFY(m_pointer->press());
    QVERIFY(m_pointer->moveTo({60, 12}));
    QCOMPARE(knobX(), 0.0);
    QVERIFY(m_pointer->release());
    QVERIFY(!m_view->isOn());
    QVERIFY(m_pointer->click({60, 12}));
    QVERIFY(m_view->isOn());
}

void ZQSwitchMouseTest::theKnobSlidesAfterAClick()
{
    bool slid = false;
    connect(m_view, &ZQSwitch::onChanged, this, [&] {
        // The last report of a click comes when the knob has set out.
        slid =
            knobX() == 48.0 && m_view->buttonLayer()->theSwitch()->presentationFrame().x() == 0.0;
    });
    QVERIFY(m_pointer->click({20, 12}));
    QVERIFY(slid);
    QTRY_COMPARE(m_view->buttonLayer()->theSwitch()->presentationFrame().x(), 48.0);
}

// What a run of this program at that scale printed.
QByteArray ZQSwitchMouseTest::ownRun(const QString &scale, const QStringList &functions)
{
    QProcess run;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_SCALE_FACTOR"), scale);
    run.setProcessEnvironment(environment);
    run.setProcessChannelMode(QProcess::MergedChannels);
    run.start(QCoreApplication::applicationFilePath(),
              QStringList{QStringLiteral("ZQSwitchMouseTest")} + functions);
    run.waitForFinished(100000);
    return run.readAll();
}

void ZQSwitchMouseTest::thePointerMeansTheSamePointsAtEveryScale()
{
    if (qEnvironmentVariableIsSet("QT_SCALE_FACTOR")) {
        return; // this is one of the runs below
    }
    for (const auto &scale : {QStringLiteral("1.5"), QStringLiteral("2")}) {
        // Points that are whole pixels at both scales.
        const auto output = ownRun(scale, {QStringLiteral("aClickBesideTheKnobToggles"),
                                           QStringLiteral("aDragExactlyToTheMiddleGivesOff")});
        QVERIFY2(output.contains("Totals: 4 passed, 0 failed"), output.constData());
    }
}

void ZQSwitchMouseTest::everyPixelCountsAtScaleTwo()
{
    if (!qEnvironmentVariableIsSet("QT_SCALE_FACTOR")) {
        const auto output =
            ownRun(QStringLiteral("2"), {QStringLiteral("everyPixelCountsAtScaleTwo")});
        QVERIFY2(output.contains("Totals: 3 passed, 0 failed"), output.constData());
        return;
    }
    QCOMPARE(m_view->devicePixelRatioF(), 2.0);
    // The knob's last column of pixels.
    QVERIFY(m_pointer->moveTo({39.5, 12}));
    QVERIFY(m_pointer->press());
    QCOMPARE(m_view->buttonLayer()->currentEventState(),
             ZQSwitchButtonCALayer::EventState::PressedKnob);
    for (const qreal x : {40.0, 40.5, 41.0, 40.5}) {
        QVERIFY(m_pointer->moveTo({x, 12.5}));
        QCOMPARE(knobX(), x - 39.5);
    }
    QVERIFY(m_pointer->release());
    QVERIFY(!m_view->isOn());
}

TEST_CLASS(ZQSwitchMouseTest, QApplication)
#include "ZQSwitchMouseTest.moc"
