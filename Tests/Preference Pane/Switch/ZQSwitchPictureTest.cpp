// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ZQSwitch.h"
#include "Tests/Support/HandDrivenAnimations.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QPainter>
#include <QProcess>
#include <QTest>
#include <QtMath>

#include <cmath>
#include <functional>

namespace {

struct Greys {
    qreal top;
    qreal bottom;
};

constexpr Greys Normal{0.9921, 0.9019};
constexpr Greys Pressed{0.8745, 0.9568};
constexpr Greys Disabled{0.5745, 0.7568};
constexpr Greys Track{0.26, 0.72};

// What the middle of a row of a gradient over so many rows must be, from 0 to 255.
qreal greyOfRow(const Greys &greys, int row, int rows)
{
    return (greys.top + (greys.bottom - greys.top) * (row + 0.5) / rows) * 255;
}

bool isGrey(const QColor &pixel, qreal grey)
{
    return pixel.red() == pixel.green() && pixel.green() == pixel.blue() && pixel.alpha() == 255 &&
           qAbs(pixel.red() - grey) <= 1.5;
}

// Compares columns of a picture of the switch with a gradient from its top to its bottom, except
// for the outermost rows, which belong to the outlines.
QString differenceInColumns(const QImage &picture, int first, int last, const Greys &greys)
{
    for (int column = first; column <= last; ++column) {
        for (int row = 1; row < picture.height() - 1; ++row) {
            const QColor pixel = picture.pixelColor(column, row);
            const qreal grey = greyOfRow(greys, row, picture.height());
            if (!isGrey(pixel, grey)) {
                return QStringLiteral("column %1 row %2 is %3, not %4")
                    .arg(column)
                    .arg(row)
                    .arg(pixel.name())
                    .arg(grey);
            }
        }
    }
    return {};
}

constexpr qreal Fine = 4;  // a scale at which a corner is large enough to be measured
constexpr int Radius = 20; // pixels
// A pixel this near to an edge may be a part of both sides, as arcs are painted.
constexpr qreal NearEdge = 1;

enum class Corner { TopLeft, TopRight, BottomLeft, BottomRight };

// How many pixels of a corner of the rounded rectangle are wrong; isRight is told how far each is
// from the centre of the arc.
int wrongInCorner(const QRect &rectangle, Corner corner,
                  const std::function<bool(const QPoint &pixel, qreal distance)> &isRight)
{
    const bool left = corner == Corner::TopLeft || corner == Corner::BottomLeft;
    const bool top = corner == Corner::TopLeft || corner == Corner::TopRight;
    int wrong = 0;
    for (int x = 0; x < Radius; ++x) {
        for (int y = 0; y < Radius; ++y) {
            const QPoint pixel(left ? rectangle.left() + x : rectangle.right() - x,
                               top ? rectangle.top() + y : rectangle.bottom() - y);
            wrong += isRight(pixel, std::hypot(Radius - x - 0.5, Radius - y - 0.5)) ? 0 : 1;
        }
    }
    return wrong;
}

const auto allCorners = {Corner::TopLeft, Corner::TopRight, Corner::BottomLeft,
                         Corner::BottomRight};

// The switch on a window of the given colour, at a scale.
QImage pictureOf(ZQSwitch &view, qreal scale, const QColor &window = Qt::white)
{
    QImage picture((QSizeF(view.size()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(scale);
    picture.fill(window);
    view.render(&picture, QPoint(), QRegion(), QWidget::RenderFlags());
    picture.setDevicePixelRatio(1);
    return picture;
}

// A switch of the usual size: the knob is at 0 or at 48, and is 40 wide.
QString differenceFromRequired(const QImage &picture, qreal scale, bool on, const Greys &face)
{
    const auto pixel = [scale](qreal point) { return qRound(point * scale); };
    const int corner = pixel(5) + 1;
    const int left = pixel(on ? 48 : 0);
    const QString knob =
        differenceInColumns(picture, left + corner, left + pixel(40) - 1 - corner, face);
    if (!knob.isEmpty()) {
        return QStringLiteral("knob: ") + knob;
    }
    const QString track =
        on ? differenceInColumns(picture, corner, left - 1, Track)
           : differenceInColumns(picture, pixel(40), picture.width() - 1 - corner, Track);
    return track.isEmpty() ? track : QStringLiteral("track: ") + track;
}

} // namespace

class ZQSwitchPictureTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theFacesHaveTheRequiredGreys_data();
    void theFacesHaveTheRequiredGreys();
    void theFacesAreMadeAnewForTheKnobsHeight();
    void theViewShowsKnobAndTrack_data();
    void theViewShowsKnobAndTrack();
    void theKnobsEdgesAreSharp_data();
    void theKnobsEdgesAreSharp();
    void theKnobHasAThinBlackOutline();
    void theTrackHasADarkOutlineAndRoundCorners();
    void theCornersOfTheFacesHaveARadiusOfFive();
    void theCornersOfTheTrackHaveARadiusOfFive();
    void theCornersOfTheKnobHaveARadiusOfFive();
    void anotherGradientIsDrawnFromTheBottomUp();
    void aHiddenKnobLayerShowsTheTrackAlone();
    void theKnobIsPaintedWhereItIsShown();
    void itLooksTheSameOnLightAndDarkWindows();
    void theScreensScaleIsFollowed();
};

void ZQSwitchPictureTest::theFacesHaveTheRequiredGreys_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::newRow("1") << 1.0;
    QTest::newRow("1.5") << 1.5;
    QTest::newRow("2") << 2.0;
}

void ZQSwitchPictureTest::theFacesHaveTheRequiredGreys()
{
    QFETCH(qreal, scale);
    ZQSwitch view;
    const auto layer = view.buttonLayer();
    layer->setContentsScale(scale);
    const std::vector<std::pair<QImage, Greys>> faces = {{layer->notClickedImgRef(), Normal},
                                                         {layer->clickedImgRef(), Pressed},
                                                         {layer->disabledImgRef(), Disabled}};
    for (const auto &[image, greys] : faces) {
        QCOMPARE(image.size(), (QSizeF(40, 24) * scale).toSize());
        const int corner = qCeil(5 * scale);
        for (int row = 0; row < image.height(); ++row) {
            const bool inCorner = row < corner || row >= image.height() - corner;
            const int margin = inCorner ? corner : 0;
            for (int column = margin; column < image.width() - margin; ++column) {
                const QString where = QStringLiteral("%1,%2: %3")
                                          .arg(column)
                                          .arg(row)
                                          .arg(image.pixelColor(column, row).name());
                QVERIFY2(
                    isGrey(image.pixelColor(column, row), greyOfRow(greys, row, image.height())),
                    qPrintable(where));
            }
        }
        // Round corners.
        QVERIFY(image.pixelColor(0, 0).alpha() < 30);
        QVERIFY(image.pixelColor(image.width() - 1, image.height() - 1).alpha() < 30);
    }
}

void ZQSwitchPictureTest::theFacesAreMadeAnewForTheKnobsHeight()
{
    ZQSwitch view;
    QCOMPARE(view.buttonLayer()->notClickedImgRef().size(), QSize(40, 24));
    view.resize(88, 31);
    QCOMPARE(view.buttonLayer()->notClickedImgRef().size(), QSize(40, 31));
    QCOMPARE(view.buttonLayer()->theSwitch()->contents(), view.buttonLayer()->notClickedImgRef());
    const QString difference = differenceInColumns(pictureOf(view, 1), 6, 33, Normal);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void ZQSwitchPictureTest::theViewShowsKnobAndTrack_data()
{
    theFacesHaveTheRequiredGreys_data();
}

void ZQSwitchPictureTest::theViewShowsKnobAndTrack()
{
    QFETCH(qreal, scale);
    for (const bool on : {false, true}) {
        ZQSwitch view;
        view.setOn(on);
        QString difference = differenceFromRequired(pictureOf(view, scale), scale, on, Normal);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        view.buttonLayer()->mouseDown({on ? 60.0 : 20.0, 12});
        difference = differenceFromRequired(pictureOf(view, scale), scale, on, Pressed);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        view.setEnabled(false);
        difference = differenceFromRequired(pictureOf(view, scale), scale, on, Disabled);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        view.setEnabled(true);
        difference = differenceFromRequired(pictureOf(view, scale), scale, on, Pressed);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }
}

void ZQSwitchPictureTest::theKnobsEdgesAreSharp_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<int>("width");
    QTest::newRow("1") << 1.0 << 88;
    QTest::newRow("1.5") << 1.5 << 88;
    QTest::newRow("1.5, between pixels") << 1.5 << 89;
    QTest::newRow("1.25, between pixels") << 1.25 << 87;
    QTest::newRow("2") << 2.0 << 88;
}

void ZQSwitchPictureTest::theKnobsEdgesAreSharp()
{
    QFETCH(qreal, scale);
    QFETCH(int, width);
    ZQSwitch view;
    view.resize(width, 24);
    view.setOn(true);
    const QImage picture = pictureOf(view, scale);
    const int row = picture.height() / 2;
    const qreal track = greyOfRow(Track, row, picture.height());
    const qreal face = greyOfRow(Normal, row, picture.height());
    int others = 0;
    for (int column = picture.width() / 4; column < picture.width() * 3 / 4; ++column) {
        const QColor pixel = picture.pixelColor(column, row);
        others += isGrey(pixel, track) || isGrey(pixel, face) ? 0 : 1;
    }
    QCOMPARE(others, 1); // the outline of the knob's left edge
}

void ZQSwitchPictureTest::theKnobHasAThinBlackOutline()
{
    ZQSwitch view;
    // Half a point of black: half of a pixel at scale 1, one at 2.
    const QImage single = pictureOf(view, 1);
    QVERIFY(isGrey(single.pixelColor(39, 12), greyOfRow(Normal, 12, 24) / 2));
    const QImage twofold = pictureOf(view, 2);
    QVERIFY(isGrey(twofold.pixelColor(79, 24), 0));
    QVERIFY(isGrey(twofold.pixelColor(0, 24), 0));
    QVERIFY(isGrey(twofold.pixelColor(40, 0), 0));
    QVERIFY(isGrey(twofold.pixelColor(40, 47), 0));
}

void ZQSwitchPictureTest::theTrackHasADarkOutlineAndRoundCorners()
{
    ZQSwitch view;
    const QImage single = pictureOf(view, 1);
    // Half of the line of one point is inside the view.
    QVERIFY(isGrey(single.pixelColor(87, 12), (greyOfRow(Track, 12, 24) + 69) / 2));
    QVERIFY(isGrey(single.pixelColor(60, 23), (greyOfRow(Track, 23, 24) + 69) / 2));
    QVERIFY(isGrey(single.pixelColor(60, 0), (greyOfRow(Track, 0, 24) + 69) / 2));
    const QImage twofold = pictureOf(view, 2);
    QVERIFY(isGrey(twofold.pixelColor(175, 24), 69));
    QVERIFY(isGrey(twofold.pixelColor(120, 47), 69));
    for (const auto &corner : {QPoint(0, 0), QPoint(175, 0), QPoint(0, 47), QPoint(175, 47)}) {
        QCOMPARE(twofold.pixelColor(corner), QColor(Qt::white));
    }
}

void ZQSwitchPictureTest::theCornersOfTheFacesHaveARadiusOfFive()
{
    ZQSwitch view;
    const auto layer = view.buttonLayer();
    layer->setContentsScale(Fine);
    for (const auto &face :
         {layer->notClickedImgRef(), layer->clickedImgRef(), layer->disabledImgRef()}) {
        QCOMPARE(face.size(), QSize(160, 96));
        const auto isRight = [&face](const QPoint &pixel, qreal distance) {
            const int alpha = face.pixelColor(pixel).alpha();
            return (distance < Radius + NearEdge || alpha == 0) &&
                   (distance > Radius - NearEdge || alpha == 255);
        };
        for (const auto corner : allCorners) {
            QCOMPARE(wrongInCorner(face.rect(), corner, isRight), 0);
        }
    }
}

void ZQSwitchPictureTest::theCornersOfTheTrackHaveARadiusOfFive()
{
    ZQSwitch view;
    view.buttonLayer()->setHidden(true);
    const QImage picture = pictureOf(view, Fine);
    const auto isRight = [&picture](const QPoint &pixel, qreal distance) {
        constexpr qreal half = Fine / 2; // of the outline, which lies on the edge
        const QColor colour = picture.pixelColor(pixel);
        const qreal fill = greyOfRow(Track, pixel.y(), picture.height());
        return (distance < Radius + half + NearEdge || colour == QColor(Qt::white)) &&
               (qAbs(distance - Radius) > half - NearEdge || isGrey(colour, 69)) &&
               (distance > Radius - half - NearEdge || isGrey(colour, fill));
    };
    for (const auto corner : allCorners) {
        QCOMPARE(wrongInCorner(picture.rect(), corner, isRight), 0);
    }
}

// The right ones: what is seen around them is the track.
void ZQSwitchPictureTest::theCornersOfTheKnobHaveARadiusOfFive()
{
    ZQSwitch view;
    const QImage picture = pictureOf(view, Fine);
    const auto isRight = [&picture](const QPoint &pixel, qreal distance) {
        constexpr qreal border = Fine / 2;
        constexpr int outline = 3; // rows that the track's outline is a part of
        const QColor colour = picture.pixelColor(pixel);
        const int row = pixel.y();
        const bool onTrack = row >= outline && row < picture.height() - outline;
        return (!onTrack || distance < Radius + NearEdge ||
                isGrey(colour, greyOfRow(Track, row, picture.height()))) &&
               (distance > Radius - border - NearEdge ||
                isGrey(colour, greyOfRow(Normal, row, picture.height())));
    };
    for (const auto corner : {Corner::TopRight, Corner::BottomRight}) {
        QCOMPARE(wrongInCorner({0, 0, 160, 96}, corner, isRight), 0);
    }
}

void ZQSwitchPictureTest::anotherGradientIsDrawnFromTheBottomUp()
{
    ZQSwitch view;
    view.setGradient(platform::Gradient(Qt::black, Qt::white));
    const QString difference = differenceInColumns(pictureOf(view, 1), 41, 82, {1, 0});
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void ZQSwitchPictureTest::aHiddenKnobLayerShowsTheTrackAlone()
{
    ZQSwitch view;
    view.buttonLayer()->setHidden(true);
    const QString difference = differenceInColumns(pictureOf(view, 1), 6, 81, Track);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void ZQSwitchPictureTest::theKnobIsPaintedWhereItIsShown()
{
    HandDrivenAnimations time;
    ZQSwitch view;
    view.show();
    view.setOn(true, Animated::Yes);
    QString difference = differenceFromRequired(pictureOf(view, 1), 1, false, Normal);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    time.pass(100);
    const int left = qRound(view.buttonLayer()->theSwitch()->presentationFrame().x());
    QVERIFY(left > 6 && left < 48);
    difference = differenceInColumns(pictureOf(view, 1), left + 6, left + 33, Normal);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    difference = differenceInColumns(pictureOf(view, 1), 6, left - 1, Track);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    time.pass(150);
    difference = differenceFromRequired(pictureOf(view, 1), 1, true, Normal);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void ZQSwitchPictureTest::itLooksTheSameOnLightAndDarkWindows()
{
    ZQSwitch view;
    const QColor dark(0x2a, 0x2e, 0x32);
    const QImage onLight = pictureOf(view, 1, Qt::white);
    const QImage onDark = pictureOf(view, 1, dark);
    QVERIFY(isGrey(onLight.pixelColor(87, 0), 255) || onLight.pixelColor(87, 0).red() > 200);
    QVERIFY(onDark.pixelColor(87, 0).red() < 80);
    const QRect inside(6, 1, 76, 22);
    QCOMPARE(onLight.copy(inside), onDark.copy(inside));
}

// Runs itself with the scale of a screen.
void ZQSwitchPictureTest::theScreensScaleIsFollowed()
{
    ZQSwitch view;
    view.setOn(true);
    const qreal scale = view.devicePixelRatioF();
    const QString inRun = qEnvironmentVariable("QT_SCALE_FACTOR");
    if (!inRun.isEmpty()) {
        QCOMPARE(scale, inRun.toDouble());
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        const QImage picture = view.grab().toImage();
        QCOMPARE(picture.size(), (QSizeF(88, 24) * scale).toSize());
        QCOMPARE(view.buttonLayer()->notClickedImgRef().size(), (QSizeF(40, 24) * scale).toSize());
        const QString difference = differenceFromRequired(
            picture.convertToFormat(QImage::Format_ARGB32_Premultiplied), scale, true, Normal);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        return;
    }
    for (const auto &factor : {QStringLiteral("1"), QStringLiteral("1.5"), QStringLiteral("2")}) {
        QProcess run;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_SCALE_FACTOR"), factor);
        run.setProcessEnvironment(environment);
        run.setProcessChannelMode(QProcess::MergedChannels);
        run.start(
            QCoreApplication::applicationFilePath(),
            {QStringLiteral("ZQSwitchPictureTest"), QStringLiteral("theScreensScaleIsFollowed")});
        QVERIFY(run.waitForFinished(60000));
        const QByteArray output = run.readAll();
        QVERIFY2(run.exitStatus() == QProcess::NormalExit && run.exitCode() == 0,
                 output.constData());
        QVERIFY2(output.contains("Totals: 3 passed"), output.constData());
    }
}

TEST_CLASS(ZQSwitchPictureTest, QApplication)
#include "ZQSwitchPictureTest.moc"
