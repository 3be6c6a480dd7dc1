// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/Gradient.h"

#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QTest>

using platform::calibratedWhite;
using platform::Gradient;

namespace {

// Black to white over the given rectangle of a picture that is red elsewhere.
QImage drawn(const QRectF &area, qreal angle)
{
    QImage picture(40, 40, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::red);
    QPainter painter(&picture);
    QPainterPath path;
    path.addRect(area);
    Gradient(Qt::black, Qt::white).drawInPath(painter, path, angle);
    return picture;
}

} // namespace

class GradientTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aWhiteLevelIsTheNearestGrey();
    void atNinetyDegreesTheStartingColorIsAtTheBottom();
    void atNoDegreesTheStartingColorIsAtTheLeft();
    void anAngleBetweenRunsFromCornerToCorner();
    void onlyThePathIsFilled();
    void aGradientComesBackFromItsArchive();
    void whatIsNoGradientReadsAsNone_data();
    void whatIsNoGradientReadsAsNone();
};

void GradientTest::aWhiteLevelIsTheNearestGrey()
{
    QCOMPARE(calibratedWhite(0), QColor(0, 0, 0));
    QCOMPARE(calibratedWhite(1), QColor(255, 255, 255));
    QCOMPARE(calibratedWhite(0.72), QColor(184, 184, 184)); // 183.6
    QCOMPARE(calibratedWhite(0.26), QColor(66, 66, 66));    // 66.3
    QCOMPARE(calibratedWhite(0.27), QColor(69, 69, 69));    // 68.85
    QCOMPARE(calibratedWhite(-1), QColor(0, 0, 0));
    QCOMPARE(calibratedWhite(7), QColor(255, 255, 255));
}

void GradientTest::atNinetyDegreesTheStartingColorIsAtTheBottom()
{
    const QImage picture = drawn({10, 10, 20, 20}, 90);
    for (int row = 0; row < 20; ++row) {
        const qreal fromBottom = (20 - row - 0.5) / 20;
        for (int column = 0; column < 20; ++column) {
            const int grey = picture.pixelColor(10 + column, 10 + row).red();
            QVERIFY2(qAbs(grey - fromBottom * 255) <= 1.5, qPrintable(QString::number(row)));
        }
    }
}

void GradientTest::atNoDegreesTheStartingColorIsAtTheLeft()
{
    const QImage picture = drawn({10, 10, 20, 20}, 0);
    QVERIFY(picture.pixelColor(10, 15).red() < 10);
    QVERIFY(picture.pixelColor(29, 15).red() > 245);
    QCOMPARE(picture.pixelColor(17, 10), picture.pixelColor(17, 29));
}

void GradientTest::anAngleBetweenRunsFromCornerToCorner()
{
    const QImage picture = drawn({0, 0, 40, 40}, 45);
    QVERIFY(picture.pixelColor(0, 39).red() < 10);
    QVERIFY(picture.pixelColor(39, 0).red() > 245);
    QVERIFY(qAbs(picture.pixelColor(0, 0).red() - 128) < 6);
}

void GradientTest::onlyThePathIsFilled()
{
    const QImage picture = drawn({10, 10, 20, 20}, 90);
    QCOMPARE(picture.pixelColor(9, 15), QColor(Qt::red));
    QCOMPARE(picture.pixelColor(30, 15), QColor(Qt::red));
    QCOMPARE(picture.pixelColor(15, 9), QColor(Qt::red));
    QCOMPARE(picture.pixelColor(15, 30), QColor(Qt::red));
}

void GradientTest::aGradientComesBackFromItsArchive()
{
    const Gradient gradient(QColor(1, 2, 3, 4), calibratedWhite(0.5));
    const auto back = Gradient::fromVariant(gradient.toVariant());
    QVERIFY(back.has_value());
    QCOMPARE(back->startingColor(), QColor(1, 2, 3, 4));
    QVERIFY(*back == gradient);
}

void GradientTest::whatIsNoGradientReadsAsNone_data()
{
    const auto starting = QStringLiteral("startingColor");
    const auto ending = QStringLiteral("endingColor");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("nothing") << QVariant();
    QTest::newRow("text") << QVariant(QStringLiteral("grey"));
    QTest::newRow("an empty dictionary") << QVariant(QVariantMap());
    QTest::newRow("one colour") << QVariant(QVariantMap{{starting, QStringLiteral("#ff000000")}});
    QTest::newRow("no colour") << QVariant(
        QVariantMap{{starting, QStringLiteral("#ff000000")}, {ending, QStringLiteral("#zz")}});
    QTest::newRow("a number") << QVariant(QVariantMap{{starting, 1}, {ending, QVariantList()}});
}

void GradientTest::whatIsNoGradientReadsAsNone()
{
    QFETCH(QVariant, value);
    QVERIFY(!Gradient::fromVariant(value).has_value());
}

TEST_CLASS(GradientTest, QApplication)
#include "GradientTest.moc"
