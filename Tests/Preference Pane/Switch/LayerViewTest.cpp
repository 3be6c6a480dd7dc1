// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/LayerView.h"

#include "Tests/Support/HandDrivenAnimations.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QPainter>
#include <QProxyStyle>
#include <QTest>

using platform::KeyedArchive;
using platform::Layer;
using platform::LayerView;

namespace {

class View : public LayerView {
public:
    using LayerView::LayerView;
    using LayerView::matchLayerToView;

    void drawRect(QPainter &painter, const QRectF &rect) override
    {
        ++drawings;
        painter.fillRect(rect, Qt::red);
    }
    int drawings = 0;
};

class StillStyle : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *data) const override
    {
        return hint == SH_Widget_Animation_Duration
                   ? 0
                   : QProxyStyle::styleHint(hint, option, widget, data);
    }
};

std::shared_ptr<Layer> viewLayerWithSublayer(LayerView &view)
{
    const auto root = std::make_shared<Layer>();
    view.setLayer(root);
    auto sublayer = std::make_shared<Layer>();
    sublayer->setFrame({0, 0, 10, 10});
    root->addSublayer(sublayer);
    return sublayer;
}

} // namespace

class LayerViewTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theLayerFollowsTheViewsSize();
    void theViewDrawsTheContentOfItsLayerOnly();
    void nothingIsPaintedWithoutALayer();
    void theScaleIsThatOfWhatIsPaintedOn();
    void layersSlideInAViewThatIsShown();
    void hidingTheViewEndsItsSlides();
    void destroyingTheViewEndsItsSlides();
    void nothingSlidesWhereTheDesktopsAnimationsAreOff();
    void theGeometryIsArchived();
    void anArchiveWithoutAGeometryLeavesTheViewsOwn();
};

void LayerViewTest::theLayerFollowsTheViewsSize()
{
    View view;
    view.resize(100, 50);
    const auto layer = std::make_shared<Layer>();
    view.setLayer(layer);
    QCOMPARE(layer->frame(), QRectF(0, 0, 100, 50));
    view.show();
    view.resize(120, 60);
    QTRY_COMPARE(layer->frame(), QRectF(0, 0, 120, 60));
    view.hide();
    view.resize(130, 70); // of which a hidden view hears only when it is shown
    view.matchLayerToView();
    QCOMPARE(layer->frame(), QRectF(0, 0, 130, 70));
    QCOMPARE(layer->presentationFrame(), layer->frame());
}

void LayerViewTest::theViewDrawsTheContentOfItsLayerOnly()
{
    View view;
    view.resize(20, 10);
    const auto sublayer = viewLayerWithSublayer(view);
    sublayer->setDelegate(&view);
    sublayer->setNeedsDisplay();
    const QImage picture = view.grab().toImage();
    QCOMPARE(view.drawings, 1);
    QCOMPARE(picture.pixelColor(19, 9), QColor(Qt::red));
}

void LayerViewTest::nothingIsPaintedWithoutALayer()
{
    View view;
    view.grab();
    view.setLayer(std::make_shared<Layer>());
    view.setLayer(nullptr);
    view.grab();
    QCOMPARE(view.drawings, 0);
}

void LayerViewTest::theScaleIsThatOfWhatIsPaintedOn()
{
    View view;
    view.resize(20, 10);
    const auto sublayer = viewLayerWithSublayer(view);
    for (const qreal scale : {1.0, 1.5, 2.0}) {
        QImage target(QSize(20, 10) * scale, QImage::Format_ARGB32_Premultiplied);
        target.setDevicePixelRatio(scale);
        view.render(&target);
        QCOMPARE(view.layer()->contentsScale(), scale);
        QCOMPARE(sublayer->contentsScale(), scale);
    }
    const auto late = std::make_shared<Layer>();
    sublayer->addSublayer(late);
    QCOMPARE(late->contentsScale(), 2.0);
}

void LayerViewTest::layersSlideInAViewThatIsShown()
{
    HandDrivenAnimations time;
    View view;
    const auto sublayer = viewLayerWithSublayer(view);
    sublayer->setFrame({50, 0, 10, 10});
    QCOMPARE(sublayer->presentationFrame(), sublayer->frame()); // not shown yet
    view.show();
    sublayer->setFrame({0, 0, 10, 10});
    QCOMPARE(sublayer->presentationFrame().x(), 50.0);
    time.pass(249);
    QVERIFY(sublayer->presentationFrame().x() > 0);
    time.pass(1);
    QCOMPARE(sublayer->presentationFrame().x(), 0.0);
}

void LayerViewTest::hidingTheViewEndsItsSlides()
{
    View view;
    const auto sublayer = viewLayerWithSublayer(view);
    view.show();
    sublayer->setFrame({50, 0, 10, 10});
    QVERIFY(sublayer->presentationFrame() != sublayer->frame());
    view.hide();
    QCOMPARE(sublayer->presentationFrame(), sublayer->frame());
}

void LayerViewTest::destroyingTheViewEndsItsSlides()
{
    HandDrivenAnimations time;
    auto view = std::make_unique<View>();
    auto sublayer = viewLayerWithSublayer(*view);
    sublayer->setDelegate(view.get());
    view->show();
    sublayer->setFrame({50, 0, 10, 10});
    view.reset();
    time.pass(100); // a slide of a layer that is kept reaches no view
    QVERIFY(sublayer->delegate() == nullptr);
    QVERIFY(sublayer->superlayer() == nullptr);
    sublayer.reset();
    time.pass(100);
}

void LayerViewTest::nothingSlidesWhereTheDesktopsAnimationsAreOff()
{
    View view;
    StillStyle still;
    view.setStyle(&still);
    const auto sublayer = viewLayerWithSublayer(view);
    view.show();
    sublayer->setFrame({50, 0, 10, 10});
    QCOMPARE(sublayer->presentationFrame(), sublayer->frame());
}

void LayerViewTest::theGeometryIsArchived()
{
    View view;
    view.setGeometry(3, 4, 50, 60);
    KeyedArchive archive;
    view.encodeWithCoder(archive);
    const View copy(KeyedArchive(archive.values()), nullptr);
    QCOMPARE(copy.geometry(), QRect(3, 4, 50, 60));
}

void LayerViewTest::anArchiveWithoutAGeometryLeavesTheViewsOwn()
{
    const View view;
    const View fromNothing{KeyedArchive()};
    QCOMPARE(fromNothing.geometry(), view.geometry());
    KeyedArchive damaged;
    damaged.encodeObject(QVariantList{1, 2}, QStringLiteral("frame"));
    const View fromDamaged(damaged);
    QCOMPARE(fromDamaged.geometry(), view.geometry());
}

TEST_CLASS(LayerViewTest, QApplication)
#include "LayerViewTest.moc"
