// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/ZQKeyTextCell.h"
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QTableView>
#include <QTest>
#include <QTextLayout>

using namespace std::chrono_literals;

// Where the controls are and how large, for people who read from the right or need large letters.
class PaneLayoutTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup();

    void rightToLeftThePageMirrorsAndTheSwitchStaysBetweenItsLabels();
    void rightToLeftTheStatusKeepsItsDotsAtTheEnd();
    void rightToLeftAShortcutReadsAsEver_data();
    void rightToLeftAShortcutReadsAsEver();
    void titlePortFieldMenuAndKeyColumnGrowWithTheFont();
    void thePortHintShowsForAnUnusablePortInUseOnly();
    void thePortHintStandsBelowItsFieldAndIsReadWithIt();

private:
    const QFont m_font = QApplication::font();
};

namespace {

// The part of a picture that differs from its first pixel.
QRect inkOf(const QImage &picture)
{
    QRect ink;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixel(x, y) != picture.pixel(0, 0)) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

// Where each letter of the shortcut is, counted from the first, in a line of that direction.
QList<int> placesOfLetters(const QString &line, const QString &shortcut,
                           Qt::LayoutDirection direction)
{
    QTextLayout layout(line, QApplication::font());
    QTextOption option;
    option.setTextDirection(direction);
    layout.setTextOption(option);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    QList<int> places;
    for (int i = 0; i < shortcut.size(); ++i) {
        const auto glyphs = layout.glyphRuns(line.indexOf(shortcut) + i, 1);
        const auto x = qRound(glyphs.value(0).positions().value(0).x());
        places << (places.isEmpty() ? x : x - places.first());
    }
    places.removeFirst();
    return places;
}

int leftOf(const QWidget *widget)
{
    return widget->mapTo(widget->window(), QPoint(0, 0)).x();
}

int rightOf(const QWidget *widget)
{
    return leftOf(widget) + widget->width();
}

} // namespace

void PaneLayoutTest::cleanup()
{
    QApplication::setLayoutDirection(Qt::LeftToRight);
    QApplication::setFont(m_font);
}

void PaneLayoutTest::rightToLeftThePageMirrorsAndTheSwitchStaysBetweenItsLabels()
{
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        QApplication::setLayoutDirection(direction);
        PaneFixture fixture(60s);
        fixture.open();
        const auto *off = fixture.control<QWidget>("masterOffLabel");
        const auto *on = fixture.control<QWidget>("masterOnLabel");
        QVERIFY(rightOf(off) <= leftOf(&fixture.masterSwitch()));
        QVERIFY(rightOf(&fixture.masterSwitch()) <= leftOf(on));
        const auto *title = fixture.control<QWidget>("titleLabel");
        QCOMPARE(leftOf(title) > rightOf(on), direction == Qt::RightToLeft);
    }
}

void PaneLayoutTest::rightToLeftTheStatusKeepsItsDotsAtTheEnd()
{
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        QApplication::setLayoutDirection(direction);
        PaneFixture fixture(60s);
        fixture.open();
        fixture.window().resize(1000, 600);
        auto *line = fixture.control<QLabel>("statusLabel");
        QTRY_VERIFY(line->width() > 500);
        line->setText(QStringLiteral("Status: Relaunching..."));
        const auto picture = line->grab().toImage();
        const auto ink = inkOf(picture);
        QCOMPARE(ink.center().x() > picture.width() / 2, direction == Qt::RightToLeft);
        constexpr int edge = 4; // pixels: a letter's or a dot's
        const auto letters = picture.copy(ink.adjusted(-1, 0, edge - ink.width(), 0));
        const auto dots = picture.copy(ink.adjusted(ink.width() - edge, 0, 0, 0));
        QVERIFY(inkOf(letters).height() > 5);
        QVERIFY(inkOf(dots).height() < 5);
    }
}

void PaneLayoutTest::rightToLeftAShortcutReadsAsEver_data()
{
    QTest::addColumn<QString>("shortcut");
    for (const char *shortcut : {"Ctrl+,", "Ctrl++", "Shift+Cmd+[", "F5", "Alt+\u05e9"}) {
        QTest::newRow(shortcut) << QString::fromUtf8(shortcut);
    }
}

void PaneLayoutTest::rightToLeftAShortcutReadsAsEver()
{
    QFETCH(QString, shortcut);
    const ZQKeyTextCell cell;
    QCOMPARE(placesOfLetters(cell.displayText(shortcut, {}), shortcut, Qt::RightToLeft),
             placesOfLetters(shortcut, shortcut, Qt::LeftToRight));
}

void PaneLayoutTest::titlePortFieldMenuAndKeyColumnGrowWithTheFont()
{
    QList<QList<int>> sizes;
    for (const auto points : {10, 20}) {
        auto font = m_font;
        font.setPointSize(points);
        QApplication::setFont(font);
        PaneFixture fixture(60s);
        fixture.open();
        fixture.pane().showPage(QStringLiteral("keyboard"));
        fixture.pane().showPage(QStringLiteral("network"));
        QTest::qWait(0);
        const auto *title = fixture.control<QLabel>("titleLabel");
        QVERIFY(title->height() > fixture.control<QLabel>("statusLabel")->height());
        sizes << QList<int>{
            title->sizeHint().height(),
            fixture.control<QLineEdit>("networkCustomPortText")->width(),
            fixture.control<QWidget>("networkInterfacePopUp")->maximumWidth(),
            fixture.control<QTableView>("keyTable")->horizontalHeader()->sectionSize(0)};
    }
    for (int i = 0; i < sizes.first().size(); ++i) {
        QVERIFY2(sizes.last().at(i) >= sizes.first().at(i) * 1.8,
                 qPrintable(QStringLiteral("%1: %2, %3")
                                .arg(i)
                                .arg(sizes.first().at(i))
                                .arg(sizes.last().at(i))));
    }
}

void PaneLayoutTest::thePortHintShowsForAnUnusablePortInUseOnly()
{
    PaneFixture fixture(60s);
    PaneFixture::writePreferences({{QStringLiteral("customPort"), 65536}});
    fixture.open();
    fixture.pane().showPage(QStringLiteral("network"));
    const auto *hint = fixture.control<QLabel>("networkPortHint");
    auto *box = fixture.control<QCheckBox>("networkCustomPortCheck");
    auto *field = fixture.control<QLineEdit>("networkCustomPortText");
    QVERIFY(!hint->isVisible());
    box->click();
    QVERIFY(hint->isVisible());
    for (const auto &[text, usable] :
         {std::pair("65535", true), {"0", false}, {"1", true}, {"", false}, {"80ab", true}}) {
        field->setText(QString::fromLatin1(text));
        QCOMPARE(hint->isVisible(), !usable);
    }
    field->clear();
    box->click();
    QVERIFY(!hint->isVisible());
    fixture.close();
    PaneFixture::writePreferences(
        {{QStringLiteral("customPort"), 65536}, {QStringLiteral("customPortSet"), 1}});
    fixture.open();
    fixture.pane().showPage(QStringLiteral("network"));
    QVERIFY(fixture.control<QLabel>("networkPortHint")->isVisible());
}

void PaneLayoutTest::thePortHintStandsBelowItsFieldAndIsReadWithIt()
{
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        QApplication::setLayoutDirection(direction);
        PaneFixture fixture(60s);
        fixture.open();
        fixture.pane().showPage(QStringLiteral("network"));
        const auto *hint = fixture.control<QLabel>("networkPortHint");
        auto *field = fixture.control<QLineEdit>("networkCustomPortText");
        QVERIFY(field->accessibleDescription().isEmpty());
        fixture.control<QCheckBox>("networkCustomPortCheck")->click();
        field->setText(QStringLiteral("0"));
        QTRY_VERIFY(hint->y() > field->y());
        const auto isMirrored = direction == Qt::RightToLeft;
        QTRY_COMPARE(isMirrored ? rightOf(hint) : leftOf(hint),
                     isMirrored ? rightOf(field) : leftOf(field));
        QCOMPARE(field->accessibleDescription(), hint->text());
        field->setText(QStringLiteral("1"));
        QVERIFY(field->accessibleDescription().isEmpty());
    }
}

TEST_CLASS(PaneLayoutTest, QApplication)
#include "PaneLayoutTest.moc"
