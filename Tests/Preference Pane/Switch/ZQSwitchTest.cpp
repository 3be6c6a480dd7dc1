// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ZQSwitch.h"

#include "ReportedValues.h"
#include "Tests/Support/TestProgram.h"
#include "ui_SwitchForm.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

using platform::calibratedWhite;
using platform::Gradient;
using platform::KeyedArchive;
using platform::Layer;
using State = ZQSwitchButtonCALayer::EventState;

namespace {

qreal knobX(ZQSwitch &view)
{
    return view.buttonLayer()->theSwitch()->frame().x();
}

QImage face(ZQSwitch &view)
{
    return view.buttonLayer()->theSwitch()->contents();
}

} // namespace

class ZQSwitchTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theMainLayerIsTheViewsOwn();
    void theContainerFollowsTheMainLayer();
    void theKnobLayerFillsTheContainer();
    void itIsWiderThanItsKnobByDefault();
    void itCanBePlacedInAnInterfaceFile();
    void aKnobThatIsOnStaysAtItsEndWhenTheViewGrows();
    void anotherLayerOfTheViewIsReplacedWhenItDraws();

    void anArchiveWithoutAGradientGivesTheDefaultOne();
    void theDefaultGradientIsMadeOnFirstUse();
    void theGradientAndTheGeometryComeBackFromAnArchive();
    void aDamagedGradientInAnArchiveGivesTheDefaultOne();

    void setOnIsPassedOnToTheKnob();
    void everySetOnReportsChangedOrNot();
    void setOnAnimatedReportsThroughTheBindingOnly();
    void setOnAnimatedWithTheCurrentValueDoesNothing();
    void setOnAnimatedStoresTheValueFirst();
    void setOnAnimatedSaysWhetherTheKnobSlides();
    void aValueSetOnTheKnobComesBackToTheView();
    void theViewDoesNotCallTheKnobBack();
    void aValueRefusedByTheKnobComesBackToTheView();
    void anObserverMayDisableTheSwitch();
    void anObserverMayDeleteTheSwitch();
    void theValueIsAProperty();

    void disablingShowsTheDisabledFaceAndKeepsTheValue();
    void enablingIsPassedOnEvenWhenUnchanged();
    void disablingIsPassedOnEvenWhenUnchanged();
    void faceAndFlagFollowAParentThatIsDisabled();
    void faceAndFlagFollowACallThroughTheBaseClass();
    void aSwitchMadeInADisabledParentIsDisabled();
    void theEnabledPropertyUsesTheSwitchsOwnSetter();
    void whileDisabledSetOnStoresTheValueButTheKnobStays();
};

void ZQSwitchTest::theMainLayerIsTheViewsOwn()
{
    ZQSwitch view;
    view.resize(100, 30);
    view.buttonLayer();
    const auto main = view.mainLayer();
    QCOMPARE(main->name(), QStringLiteral("mainLayer"));
    QVERIFY(view.layer() == main);
    QCOMPARE(main->frame(), QRectF(0, 0, 100, 30));
    QVERIFY(main->delegate() == &view);
    QCOMPARE(main->sublayers().size(), std::size_t(1));
}

void ZQSwitchTest::theContainerFollowsTheMainLayer()
{
    ZQSwitch view;
    const auto container = view.mainLayer()->sublayers().at(0);
    QCOMPARE(container->name(), QStringLiteral("contentContainer"));
    QVERIFY(container->delegate() == &view);
    QCOMPARE(container->anchorPoint(), QPointF(0.5, 0.5));
    QCOMPARE(container->position(), QPointF(44, 12));
    QCOMPARE(container->bounds(), QRectF(0, 0, 88, 24));
    QCOMPARE(static_cast<int>(container->autoresizingMask()), 18);
    view.resize(120, 40);
    view.buttonLayer();
    QCOMPARE(container->frame(), QRectF(0, 0, 120, 40));
}

void ZQSwitchTest::theKnobLayerFillsTheContainer()
{
    ZQSwitch view;
    const auto knob = view.buttonLayer();
    QCOMPARE(knob->name(), QStringLiteral("switchLayer"));
    QVERIFY(knob->superlayer() == view.mainLayer()->sublayers().at(0).get());
    QCOMPARE(knob->frame(), QRectF(0, 0, 88, 24));
    QCOMPARE(knob->theSwitch()->frame(), QRectF(0, 0, 40, 24));
    view.resize(120, 40);
    QCOMPARE(view.buttonLayer()->frame(), QRectF(0, 0, 120, 40));
    QCOMPARE(knob->theSwitch()->frame(), QRectF(0, 0, 40, 40));
}

void ZQSwitchTest::itIsWiderThanItsKnobByDefault()
{
    const ZQSwitch view;
    QCOMPARE(view.size(), QSize(88, 24));
    QCOMPARE(view.sizeHint(), QSize(88, 24));
    QVERIFY(view.minimumSizeHint().width() > 40);
    QVERIFY(!view.isOn());
    QVERIFY(view.enabled());
}

void ZQSwitchTest::itCanBePlacedInAnInterfaceFile()
{
    QWidget window;
    Ui::SwitchForm form;
    form.setupUi(&window);
    ZQSwitch &view = *form.masterSwitch;
    QVERIFY(!view.enabled());
    QCOMPARE(face(view), view.buttonLayer()->disabledImgRef());
    view.setEnabled(true);
    window.show();
    QCOMPARE(view.size(), QSize(88, 24));
    QTest::mouseClick(&view, Qt::LeftButton);
    QVERIFY(view.isOn());
}

void ZQSwitchTest::aKnobThatIsOnStaysAtItsEndWhenTheViewGrows()
{
    ZQSwitch view;
    view.setOn(true);
    view.resize(140, 24);
    view.show();
    QCOMPARE(knobX(view), 100.0);
    QCOMPARE(view.buttonLayer()->theSwitch()->presentationFrame().x(), 100.0);
    view.resize(100, 24);
    QCOMPARE(knobX(view), 60.0);
}

void ZQSwitchTest::anotherLayerOfTheViewIsReplacedWhenItDraws()
{
    ZQSwitch view;
    const QImage before = view.grab().toImage();
    view.setLayer(std::make_shared<Layer>());
    view.grab();
    QVERIFY(view.layer() == view.mainLayer());
    QCOMPARE(view.grab().toImage(), before);
}

void ZQSwitchTest::anArchiveWithoutAGradientGivesTheDefaultOne()
{
    ZQSwitch view{KeyedArchive()};
    QCOMPARE(view.gradient().startingColor(), calibratedWhite(0.72));
    QCOMPARE(view.gradient().endingColor(), calibratedWhite(0.26));
    view.resize(88, 24);
    ZQSwitch other;
    QCOMPARE(view.grab().toImage(), other.grab().toImage());
}

void ZQSwitchTest::theDefaultGradientIsMadeOnFirstUse()
{
    ZQSwitch view;
    KeyedArchive before;
    view.encodeWithCoder(before);
    QVERIFY(!before.values().contains(QStringLiteral("bgGradient")));
    view.gradient();
    KeyedArchive after;
    view.encodeWithCoder(after);
    QVERIFY(after.values().contains(QStringLiteral("bgGradient")));
    view.setGradient(std::nullopt);
    QCOMPARE(view.gradient().startingColor(), calibratedWhite(0.72));
}

void ZQSwitchTest::theGradientAndTheGeometryComeBackFromAnArchive()
{
    ZQSwitch view;
    view.setGeometry(10, 20, 100, 30);
    view.setGradient(Gradient(Qt::red, Qt::blue));
    KeyedArchive archive;
    view.encodeWithCoder(archive);
    ZQSwitch copy(archive);
    QCOMPARE(copy.geometry(), QRect(10, 20, 100, 30));
    QVERIFY(copy.gradient() == Gradient(Qt::red, Qt::blue));
    QCOMPARE(copy.grab().toImage(), view.grab().toImage());
    QVERIFY(copy.grab().toImage() != ZQSwitch().grab().toImage());
}

void ZQSwitchTest::aDamagedGradientInAnArchiveGivesTheDefaultOne()
{
    KeyedArchive archive;
    archive.encodeObject(QStringLiteral("not a gradient"), QStringLiteral("bgGradient"));
    ZQSwitch view(archive);
    QCOMPARE(view.gradient().endingColor(), calibratedWhite(0.26));
}

void ZQSwitchTest::setOnIsPassedOnToTheKnob()
{
    ZQSwitch view;
    view.setOn(true);
    QVERIFY(view.isOn());
    QVERIFY(view.buttonLayer()->isOn());
    QCOMPARE(knobX(view), 48.0);
    view.setOn(false);
    QVERIFY(!view.buttonLayer()->isOn());
    QCOMPARE(knobX(view), 0.0);
}

void ZQSwitchTest::everySetOnReportsChangedOrNot()
{
    ZQSwitch view;
    QSignalSpy reports(&view, &ZQSwitch::onChanged);
    view.setOn(true);
    // Two from the knob, which confirms the value, and the call's own.
    QCOMPARE(valuesOf(reports), (QList<bool>{true, true, true}));
    reports.clear();
    view.setOn(true);
    QCOMPARE(valuesOf(reports), (QList<bool>{true}));
}

void ZQSwitchTest::setOnAnimatedReportsThroughTheBindingOnly()
{
    for (const auto animated : {Animated::No, Animated::Yes}) {
        ZQSwitch view;
        QSignalSpy reports(&view, &ZQSwitch::onChanged);
        view.setOn(true, animated);
        QCOMPARE(valuesOf(reports), (QList<bool>{true, true}));
        reports.clear();
        view.setOn(false, animated);
        QCOMPARE(valuesOf(reports), (QList<bool>{false, false}));
    }
}

void ZQSwitchTest::setOnAnimatedWithTheCurrentValueDoesNothing()
{
    ZQSwitch view;
    QSignalSpy reports(&view, &ZQSwitch::onChanged);
    QSignalSpy knobReports(view.buttonLayer().get(), &ZQSwitchButtonCALayer::onChanged);
    view.setOn(false, Animated::Yes);
    view.setOn(false, Animated::No);
    QCOMPARE(reports.size(), 0);
    QCOMPARE(knobReports.size(), 0);
}

void ZQSwitchTest::setOnAnimatedStoresTheValueFirst()
{
    ZQSwitch view;
    QList<bool> seen;
    connect(view.buttonLayer().get(), &ZQSwitchButtonCALayer::onChanged, this,
            [&] { seen << view.isOn(); });
    view.setOn(true, Animated::Yes);
    QCOMPARE(seen, (QList<bool>{true, true}));
}

void ZQSwitchTest::setOnAnimatedSaysWhetherTheKnobSlides()
{
    ZQSwitch view;
    view.show();
    view.setOn(true, Animated::No);
    QCOMPARE(view.buttonLayer()->theSwitch()->presentationFrame().x(), 48.0);
    view.setOn(false, Animated::Yes);
    QCOMPARE(knobX(view), 0.0);
    QCOMPARE(view.buttonLayer()->theSwitch()->presentationFrame().x(), 48.0);
    QTRY_COMPARE(view.buttonLayer()->theSwitch()->presentationFrame().x(), 0.0);
}

void ZQSwitchTest::aValueSetOnTheKnobComesBackToTheView()
{
    ZQSwitch view;
    QSignalSpy reports(&view, &ZQSwitch::onChanged);
    view.buttonLayer()->setOn(true);
    QVERIFY(view.isOn());
    QVERIFY(!reports.isEmpty());
    QCOMPARE(reports.last(), QVariantList{true});
    reports.clear();
    view.buttonLayer()->setOn(true); // unchanged values come back as well
    QCOMPARE(valuesOf(reports), (QList<bool>{true}));
}

void ZQSwitchTest::theViewDoesNotCallTheKnobBack()
{
    ZQSwitch view;
    view.buttonLayer()->setEnabled(false); // else the knob's own confirming step is heard, too
    QSignalSpy knobReports(view.buttonLayer().get(), &ZQSwitchButtonCALayer::onChanged);
    view.setOn(true);
    QCOMPARE(knobReports.size(), 1);
}

void ZQSwitchTest::aValueRefusedByTheKnobComesBackToTheView()
{
    ZQSwitch view;
    view.setEnabled(false);
    view.setOn(true); // stored, but the knob stays at x = 0
    view.setEnabled(true);
    QSignalSpy reports(&view, &ZQSwitch::onChanged);
    view.setOn(false); // there the knob answers on
    QVERIFY(view.isOn());
    QVERIFY(view.buttonLayer()->isOn());
    QCOMPARE(knobX(view), 48.0);
    QCOMPARE(reports.last(), QVariantList{true});
}

void ZQSwitchTest::anObserverMayDisableTheSwitch()
{
    ZQSwitch view;
    int reports = 0;
    connect(&view, &ZQSwitch::onChanged, this, [&] {
        if (view.enabled()) {
            ++reports;
            view.setEnabled(false);
        }
    });
    QTest::mouseClick(&view, Qt::LeftButton, {}, {20, 12});
    QCOMPARE(reports, 1);
    QVERIFY(view.isOn());
    QCOMPARE(knobX(view), 48.0);
    QCOMPARE(face(view), view.buttonLayer()->disabledImgRef());
}

void ZQSwitchTest::anObserverMayDeleteTheSwitch()
{
    const std::vector<std::function<void(ZQSwitch &)>> ways = {
        [](ZQSwitch &view) { view.setOn(true); },
        [](ZQSwitch &view) { view.setOn(true, Animated::No); },
        [](ZQSwitch &view) { view.performClick(); },
        [](ZQSwitch &view) { QTest::keyClick(&view, Qt::Key_Space); },
    };
    for (const auto &way : ways) {
        const QPointer<ZQSwitch> view(new ZQSwitch);
        connect(view.data(), &ZQSwitch::onChanged, view.data(), [view] { delete view.data(); });
        way(*view);
        QVERIFY(view.isNull());
    }
}

void ZQSwitchTest::theValueIsAProperty()
{
    ZQSwitch view;
    QVERIFY(view.setProperty("on", true));
    QVERIFY(view.buttonLayer()->isOn());
    QCOMPARE(view.property("on"), QVariant(true));
}

void ZQSwitchTest::disablingShowsTheDisabledFaceAndKeepsTheValue()
{
    ZQSwitch view;
    view.setOn(true);
    view.setEnabled(false);
    QVERIFY(!view.enabled());
    QVERIFY(view.isOn());
    QCOMPARE(face(view), view.buttonLayer()->disabledImgRef());
    QCOMPARE(knobX(view), 48.0);
}

void ZQSwitchTest::enablingIsPassedOnEvenWhenUnchanged()
{
    ZQSwitch view;
    QCOMPARE(face(view), view.buttonLayer()->notClickedImgRef());
    view.setEnabled(true);
    QCOMPARE(face(view), view.buttonLayer()->clickedImgRef());
}

void ZQSwitchTest::disablingIsPassedOnEvenWhenUnchanged()
{
    ZQSwitch view;
    view.setEnabled(false);
    view.buttonLayer()->setEnabled(true);
    view.setEnabled(false);
    QVERIFY(!view.buttonLayer()->enabled());
    QCOMPARE(face(view), view.buttonLayer()->disabledImgRef());
}

void ZQSwitchTest::faceAndFlagFollowAParentThatIsDisabled()
{
    QWidget parent;
    auto *view = new ZQSwitch(&parent);
    parent.setEnabled(false);
    QVERIFY(!view->enabled());
    QVERIFY(!view->buttonLayer()->enabled());
    QCOMPARE(face(*view), view->buttonLayer()->disabledImgRef());
    view->setEnabled(true); // the parent's state outweighs
    QVERIFY(!view->enabled());
    QVERIFY(!view->buttonLayer()->enabled());
    parent.setEnabled(true);
    QVERIFY(view->enabled());
    QVERIFY(view->buttonLayer()->enabled());
    QCOMPARE(face(*view), view->buttonLayer()->clickedImgRef());
}

void ZQSwitchTest::faceAndFlagFollowACallThroughTheBaseClass()
{
    ZQSwitch view;
    static_cast<QWidget &>(view).setEnabled(false);
    QVERIFY(!view.enabled());
    QVERIFY(!view.buttonLayer()->enabled());
    view.setDisabled(false);
    QVERIFY(view.buttonLayer()->enabled());
}

void ZQSwitchTest::aSwitchMadeInADisabledParentIsDisabled()
{
    QWidget parent;
    parent.setEnabled(false);
    auto *view = new ZQSwitch(&parent);
    QVERIFY(!view->enabled());
    QVERIFY(!view->buttonLayer()->enabled());
    QCOMPARE(face(*view), view->buttonLayer()->disabledImgRef());
}

void ZQSwitchTest::theEnabledPropertyUsesTheSwitchsOwnSetter()
{
    ZQSwitch view;
    QVERIFY(view.setProperty("enabled", true));
    QCOMPARE(face(view), view.buttonLayer()->clickedImgRef());
    QVERIFY(QMetaObject::invokeMethod(&view, "setEnabled", Q_ARG(bool, false)));
    QCOMPARE(face(view), view.buttonLayer()->disabledImgRef());
}

void ZQSwitchTest::whileDisabledSetOnStoresTheValueButTheKnobStays()
{
    ZQSwitch view;
    view.setEnabled(false);
    view.setOn(true, Animated::No);
    QVERIFY(view.isOn());
    QVERIFY(view.buttonLayer()->isOn());
    QCOMPARE(knobX(view), 0.0);
}

TEST_CLASS(ZQSwitchTest, QApplication)
#include "ZQSwitchTest.moc"
