// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/Layer.h"

#include "Preference Pane/Switch/LayerTransaction.h"
#include "Tests/Support/HandDrivenAnimations.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QPainter>
#include <QTest>

using namespace std::chrono_literals;
using platform::Layer;
using platform::LayerAttribute;
using platform::LayerTransaction;

namespace {

class Host final : public platform::LayerHost {
public:
    void layerTreeChanged() override { ++changes; }
    std::chrono::milliseconds implicitAnimationDuration() const override { return duration; }

    int changes = 0;
    std::chrono::milliseconds duration = 250ms;
};

class Delegate final : public platform::LayerDelegate {
public:
    void drawLayer(const Layer &layer, QPainter &painter) override
    {
        drawn << layer.name();
        painter.fillRect(QRectF(0, 0, 2, 1), Qt::red);
    }
    QStringList drawn;
};

QImage pictureOf(const Layer &layer)
{
    QImage picture(layer.bounds().size().toSize(), QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    layer.paint(painter, picture.rect());
    return picture;
}

QImage filled(Qt::GlobalColor color)
{
    QImage image(4, 4, QImage::Format_ARGB32_Premultiplied);
    image.fill(color);
    return image;
}

std::shared_ptr<Layer> layerWithFrame(const QRectF &frame)
{
    auto layer = std::make_shared<Layer>();
    layer->setFrame(frame);
    return layer;
}

} // namespace

class LayerTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theFrameFollowsFromBoundsPositionAndAnchorPoint();
    void settingTheFrameKeepsTheOriginOfTheBounds();
    void theYAxisPointsUpward();
    void theOriginOfTheBoundsShiftsTheSublayers();
    void aHiddenLayerIsNotPaintedNorAreItsSublayers();
    void contentsFillTheBounds();
    void contentsAreSharpAlsoBetweenPixels();
    void theBorderLiesInsideTheEdgeAboveTheSublayers();
    void theDelegateDrawsOnlyWhatIsMarkedForDisplay();
    void sizableSublayersGrowWithTheirSuperlayer();
    void constraintsBindOnlyWhatTheyName();
    void constraintsNeedTheLayoutManager();
    void aChangeOfTheFrameIsTrueAtOnceAndSlidesWhereItIsShown();
    void aChangeDuringASlideSetsOutFromWhereTheLayerIsShown();
    void theSameFrameStartsNoSlide();
    void aTransactionSetsTheDuration();
    void aDurationOfZeroEndsARunningSlide();
    void theInnermostTransactionCounts();
    void nothingSlidesWithoutAViewOrInOneThatIsNotShown();
    void finishingEndsTheSlidesOfTheWholeTree();
    void eachChangeAsksTheViewToPaint();
    void aSublayerMayOutliveItsSuperlayer();
};

void LayerTest::theFrameFollowsFromBoundsPositionAndAnchorPoint()
{
    Layer layer;
    QCOMPARE(layer.anchorPoint(), QPointF(0.5, 0.5));
    layer.setBounds({0, 0, 40, 20});
    layer.setPosition({100, 50});
    QCOMPARE(layer.frame(), QRectF(80, 40, 40, 20));
    layer.setAnchorPoint({0, 1});
    QCOMPARE(layer.frame(), QRectF(100, 30, 40, 20));
}

void LayerTest::settingTheFrameKeepsTheOriginOfTheBounds()
{
    Layer layer;
    layer.setBounds({3, 4, 10, 10});
    layer.setFrame({20, 30, 40, 50});
    QCOMPARE(layer.bounds(), QRectF(3, 4, 40, 50));
    QCOMPARE(layer.position(), QPointF(40, 55));
    QCOMPARE(layer.frame(), QRectF(20, 30, 40, 50));
}

void LayerTest::theYAxisPointsUpward()
{
    const auto root = layerWithFrame({0, 0, 10, 10});
    const auto low = layerWithFrame({0, 0, 2, 3});
    low->setContents(filled(Qt::red));
    root->addSublayer(low);
    const QImage picture = pictureOf(*root);
    QCOMPARE(picture.pixelColor(0, 9), QColor(Qt::red));
    QCOMPARE(picture.pixelColor(1, 7), QColor(Qt::red));
    QCOMPARE(picture.pixelColor(0, 6), QColor(Qt::white));
    QCOMPARE(picture.pixelColor(2, 9), QColor(Qt::white));
    QCOMPARE(picture.pixelColor(0, 0), QColor(Qt::white));
}

void LayerTest::theOriginOfTheBoundsShiftsTheSublayers()
{
    const auto root = layerWithFrame({0, 0, 10, 10});
    const auto sublayer = layerWithFrame({4, 4, 1, 1});
    sublayer->setContents(filled(Qt::red));
    root->addSublayer(sublayer);
    root->setBounds({3, 4, 10, 10});
    QCOMPARE(pictureOf(*root).pixelColor(1, 9), QColor(Qt::red));
}

void LayerTest::aHiddenLayerIsNotPaintedNorAreItsSublayers()
{
    const auto root = layerWithFrame({0, 0, 4, 4});
    const auto middle = layerWithFrame({0, 0, 4, 4});
    const auto top = layerWithFrame({0, 0, 4, 4});
    top->setContents(filled(Qt::red));
    middle->addSublayer(top);
    root->addSublayer(middle);
    QCOMPARE(pictureOf(*root).pixelColor(1, 1), QColor(Qt::red));
    middle->setHidden(true);
    QCOMPARE(pictureOf(*root).pixelColor(1, 1), QColor(Qt::white));
}

void LayerTest::contentsFillTheBounds()
{
    Layer layer;
    layer.setBounds({0, 0, 9, 6});
    QImage halves(2, 2, QImage::Format_ARGB32_Premultiplied);
    halves.fill(Qt::blue);
    halves.setPixelColor(0, 0, Qt::red);
    layer.setContents(halves);
    const QImage picture = pictureOf(layer);
    QCOMPARE(picture.pixelColor(0, 0), QColor(Qt::red));
    QCOMPARE(picture.pixelColor(8, 0), QColor(Qt::blue));
    QCOMPARE(picture.pixelColor(0, 5), QColor(Qt::blue));
}

void LayerTest::contentsAreSharpAlsoBetweenPixels()
{
    // Four points are 4.4 pixels here, from 3.3 to 7.7; the contents have four.
    QImage stripes(4, 4, QImage::Format_ARGB32_Premultiplied);
    stripes.fill(Qt::white);
    for (int y = 0; y < stripes.height(); ++y) {
        stripes.setPixelColor(0, y, Qt::black);
        stripes.setPixelColor(2, y, Qt::black);
    }
    const auto root = layerWithFrame({0, 0, 12, 12});
    const auto striped = layerWithFrame({3, 5, 4, 4});
    striped->setContents(stripes);
    root->addSublayer(striped);
    QImage picture(14, 14, QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(1.1);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    root->paint(painter, {0, 0, 12, 12});
    painter.end();
    for (int x = 0; x < stripes.width(); ++x) {
        QCOMPARE(picture.pixelColor(3 + x, 5), stripes.pixelColor(x, 1));
    }
}

void LayerTest::theBorderLiesInsideTheEdgeAboveTheSublayers()
{
    const auto root = layerWithFrame({0, 0, 12, 12});
    const auto framed = layerWithFrame({1, 1, 10, 10});
    framed->setBorderWidth(0.5);
    const auto covered = layerWithFrame({0, 0, 10, 10});
    covered->setContents(filled(Qt::white));
    framed->addSublayer(covered);
    root->addSublayer(framed);
    QImage picture = pictureOf(*root);
    QCOMPARE(picture.pixelColor(5, 0), QColor(Qt::white));
    QVERIFY(qAbs(picture.pixelColor(5, 1).red() - 128) <= 1); // half a pixel of black
    QVERIFY(qAbs(picture.pixelColor(10, 5).red() - 128) <= 1);
    QCOMPARE(picture.pixelColor(5, 2), QColor(Qt::white));
    QCOMPARE(picture.pixelColor(11, 5), QColor(Qt::white));
    QVERIFY(picture.pixelColor(1, 1).red() < 100); // a square corner
    framed->setCornerRadius(5);
    picture = pictureOf(*root);
    QCOMPARE(picture.pixelColor(1, 1), QColor(Qt::white)); // a round one
    for (int x = 0; x < picture.width(); ++x) {
        QVERIFY2(picture.pixelColor(x, 1).red() >= 80, "no pixel of the thin line is nearly black");
    }
}

void LayerTest::theDelegateDrawsOnlyWhatIsMarkedForDisplay()
{
    Delegate delegate;
    const auto root = layerWithFrame({0, 0, 10, 10});
    root->setName(QStringLiteral("root"));
    root->setDelegate(&delegate);
    const auto sublayer = layerWithFrame({4, 5, 4, 3});
    sublayer->setName(QStringLiteral("sublayer"));
    sublayer->setDelegate(&delegate);
    root->addSublayer(sublayer);
    pictureOf(*root);
    QCOMPARE(delegate.drawn, QStringList());
    sublayer->setNeedsDisplay();
    const QImage picture = pictureOf(*root);
    QCOMPARE(delegate.drawn, QStringList(QStringLiteral("sublayer")));
    // The delegate's origin is the layer's top left corner.
    QCOMPARE(picture.pixelColor(4, 2), QColor(Qt::red));
    QCOMPARE(picture.pixelColor(5, 2), QColor(Qt::red));
    QCOMPARE(picture.pixelColor(4, 3), QColor(Qt::white));
}

void LayerTest::sizableSublayersGrowWithTheirSuperlayer()
{
    const auto root = layerWithFrame({0, 0, 10, 10});
    const auto both = layerWithFrame({1, 2, 5, 5});
    both->setAutoresizingMask(Layer::WidthSizable | Layer::HeightSizable);
    QCOMPARE(static_cast<int>(both->autoresizingMask()), 18);
    const auto wide = layerWithFrame({1, 2, 5, 5});
    wide->setAutoresizingMask(Layer::WidthSizable);
    const auto fixed = layerWithFrame({1, 2, 5, 5});
    for (const auto &layer : {both, wide, fixed}) {
        root->addSublayer(layer);
    }
    root->setBounds({0, 0, 30, 13});
    QCOMPARE(both->frame(), QRectF(1, 2, 25, 8));
    QCOMPARE(wide->frame(), QRectF(1, 2, 25, 5));
    QCOMPARE(fixed->frame(), QRectF(1, 2, 5, 5));
}

void LayerTest::constraintsBindOnlyWhatTheyName()
{
    const auto root = layerWithFrame({0, 0, 100, 50});
    root->setLayoutManager(Layer::LayoutManager::Constraints);
    const auto knob = layerWithFrame({17, 9, 20, 20});
    knob->addConstraint({LayerAttribute::MinY, LayerAttribute::MinY});
    knob->addConstraint({LayerAttribute::Height, LayerAttribute::Height});
    const auto cover = layerWithFrame({5, 5, 5, 5});
    cover->addConstraint({LayerAttribute::MinX, LayerAttribute::MinX});
    cover->addConstraint({LayerAttribute::Width, LayerAttribute::Width});
    root->addSublayer(knob);
    root->addSublayer(cover);
    root->layoutSublayers();
    QCOMPARE(knob->frame(), QRectF(17, 0, 20, 50));
    QCOMPARE(cover->frame(), QRectF(0, 5, 100, 5));
    root->setBounds({0, 0, 70, 30}); // each change of the size lays out
    QCOMPARE(knob->frame(), QRectF(17, 0, 20, 30));
    QCOMPARE(cover->frame(), QRectF(0, 5, 70, 5));
}

void LayerTest::constraintsNeedTheLayoutManager()
{
    const auto root = layerWithFrame({0, 0, 100, 50});
    const auto knob = layerWithFrame({17, 9, 20, 20});
    knob->addConstraint({LayerAttribute::Height, LayerAttribute::Height});
    root->addSublayer(knob);
    root->layoutSublayers();
    QCOMPARE(knob->frame(), QRectF(17, 9, 20, 20));
}

void LayerTest::aChangeOfTheFrameIsTrueAtOnceAndSlidesWhereItIsShown()
{
    HandDrivenAnimations time;
    Host host;
    Layer layer;
    layer.setBounds({0, 0, 10, 10});
    layer.setHost(&host);
    const QRectF from = layer.frame();
    layer.setFrame(from.translated(100, 0));
    QCOMPARE(layer.frame(), from.translated(100, 0));
    QCOMPARE(layer.presentationFrame(), from);
    time.pass(125);
    const qreal halfway = layer.presentationFrame().x() - from.x();
    QVERIFY2(halfway > 20 && halfway < 99, qPrintable(QString::number(halfway)));
    QCOMPARE(layer.presentationFrame().width(), 10.0);
    time.pass(100);
    QVERIFY(layer.presentationFrame() != layer.frame());
    time.pass(25);
    QCOMPARE(layer.presentationFrame(), layer.frame());
}

void LayerTest::aChangeDuringASlideSetsOutFromWhereTheLayerIsShown()
{
    HandDrivenAnimations time;
    Host host;
    Layer layer;
    layer.setHost(&host);
    layer.setFrame({100, 0, 10, 10});
    time.pass(250);
    layer.setFrame({0, 0, 10, 10});
    time.pass(100);
    const QRectF shown = layer.presentationFrame();
    QVERIFY(shown.x() > 0 && shown.x() < 100);
    layer.setFrame({100, 0, 10, 10});
    QCOMPARE(layer.presentationFrame(), shown);
}

void LayerTest::theSameFrameStartsNoSlide()
{
    HandDrivenAnimations time;
    Host host;
    Layer layer;
    layer.setHost(&host);
    layer.setFrame({100, 0, 10, 10});
    time.pass(200);
    const QRectF shown = layer.presentationFrame();
    layer.setFrame({100, 0, 10, 10});
    QCOMPARE(layer.presentationFrame(), shown);
    time.pass(50);
    QCOMPARE(layer.presentationFrame(), layer.frame());
}

void LayerTest::aTransactionSetsTheDuration()
{
    HandDrivenAnimations time;
    Host host;
    Layer layer;
    layer.setHost(&host);
    {
        const LayerTransaction slow(1000ms);
        layer.setFrame({100, 0, 10, 10});
    }
    time.pass(900);
    QVERIFY(layer.presentationFrame() != layer.frame());
    time.pass(100);
    QCOMPARE(layer.presentationFrame(), layer.frame());
}

void LayerTest::aDurationOfZeroEndsARunningSlide()
{
    Host host;
    Layer layer;
    layer.setHost(&host);
    layer.setFrame({100, 0, 10, 10});
    QVERIFY(layer.presentationFrame() != layer.frame());
    const LayerTransaction atOnce(0ms);
    layer.setFrame({50, 0, 10, 10});
    QCOMPARE(layer.presentationFrame(), QRectF(50, 0, 10, 10));
}

void LayerTest::theInnermostTransactionCounts()
{
    QVERIFY(!LayerTransaction::animationDuration());
    {
        const LayerTransaction outer(300ms);
        {
            const LayerTransaction inner(0ms);
            QCOMPARE(LayerTransaction::animationDuration()->count(), 0);
        }
        QCOMPARE(LayerTransaction::animationDuration()->count(), 300);
    }
    QVERIFY(!LayerTransaction::animationDuration());
}

void LayerTest::nothingSlidesWithoutAViewOrInOneThatIsNotShown()
{
    Layer layer;
    layer.setFrame({100, 0, 10, 10});
    QCOMPARE(layer.presentationFrame(), layer.frame());
    Host host;
    host.duration = 0ms;
    layer.setHost(&host);
    const LayerTransaction slow(1000ms);
    layer.setFrame({0, 0, 10, 10});
    QCOMPARE(layer.presentationFrame(), layer.frame());
}

void LayerTest::finishingEndsTheSlidesOfTheWholeTree()
{
    Host host;
    const auto root = layerWithFrame({0, 0, 10, 10});
    root->setHost(&host);
    const auto sublayer = layerWithFrame({0, 0, 5, 5});
    root->addSublayer(sublayer);
    sublayer->setFrame({5, 0, 5, 5});
    QVERIFY(sublayer->presentationFrame() != sublayer->frame());
    root->finishAnimations();
    QCOMPARE(sublayer->presentationFrame(), sublayer->frame());
}

void LayerTest::eachChangeAsksTheViewToPaint()
{
    Host host;
    Layer root;
    root.setHost(&host);
    const auto sublayer = std::make_shared<Layer>();
    const std::vector<std::function<void()>> changes = {
        [&] { root.addSublayer(sublayer); },  [&] { sublayer->setFrame({1, 2, 3, 4}); },
        [&] { sublayer->setHidden(true); },   [&] { sublayer->setContents(filled(Qt::red)); },
        [&] { sublayer->setBorderWidth(1); }, [&] { sublayer->setCornerRadius(1); },
        [&] { sublayer->setNeedsDisplay(); },
    };
    for (const auto &change : changes) {
        const int before = host.changes;
        change();
        QVERIFY(host.changes > before);
    }
}

void LayerTest::aSublayerMayOutliveItsSuperlayer()
{
    Host host;
    const auto sublayer = std::make_shared<Layer>();
    {
        Layer root;
        root.setHost(&host);
        root.addSublayer(sublayer);
        QCOMPARE(sublayer->superlayer(), &root);
    }
    QVERIFY(sublayer->superlayer() == nullptr);
    sublayer->setFrame({1, 2, 3, 4});
    QCOMPARE(sublayer->presentationFrame(), QRectF(1, 2, 3, 4));
}

TEST_CLASS(LayerTest, QApplication)
#include "LayerTest.moc"
