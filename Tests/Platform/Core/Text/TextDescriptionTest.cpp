// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/TextFormat.h"
#include "Tests/Support/TestProgram.h"

#include <QDateTime>
#include <QPoint>
#include <QTest>
#include <QUrl>

#include <climits>

using platform::format;

class TextDescriptionTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void descriptions_data();
    void descriptions();
    void aDateIsDescribedInUtc();
    void aValueNestedWithoutEndIsDescribed();
};

void TextDescriptionTest::descriptions_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QVariant &value, const char *expected) {
        QTest::newRow(name) << value << QString::fromUtf8(expected);
    };
    const auto text = [](const char *utf8) { return QString::fromUtf8(utf8); };
    row("invalid", QVariant(), "(null)");
    row("text", text("Grüße"), "Grüße");
    row("empty text", text(""), "");
    row("null text", QString(), "(null)");
    row("true", true, "1");
    row("false", false, "0");
    row("number", -12, "-12");
    row("large number", ULLONG_MAX, "18446744073709551615");
    row("real", 0.1, "0.1");
    row("whole real", 3.0, "3");
    row("large real", 1e300, "1e+300");
    row("character", QChar(u'x'), "x");
    row("list", QVariantList({1, text("a"), QVariant()}), "(1, a, (null))");
    row("empty list", QVariantList(), "()");
    row("texts", QStringList({text("a"), text("b")}), "(a, b)");
    row("dictionary",
        QVariantMap({{text("status"), text("Running")}, {text("list"), QVariantList({1})}}),
        "{list = (1); status = Running}");
    row("empty dictionary", QVariantMap(), "{}");
    row("percent sign", QVariantList({text("%1"), text("%2")}), "(%1, %2)");
    row("data", QByteArray("\x01\x02\xff"), "<0102ff>");
    row("no data", QByteArray(""), "<>");
    row("much data", QByteArray(33, 'a'),
        "<6161616161616161616161616161616161616161616161616161616161616161... 33 bytes>");
    row("address", QUrl(text("https://example.com/a")), "https://example.com/a");
    row("no text", QVariant::fromValue(QPoint(1, 2)), "<QPoint>");
}

void TextDescriptionTest::descriptions()
{
    QFETCH(QVariant, value);
    QFETCH(QString, expected);
    QCOMPARE(platform::description(value), expected);
    QCOMPARE(format(QStringLiteral("[%@]"), value), u'[' + expected + u']');
}

void TextDescriptionTest::aDateIsDescribedInUtc()
{
    const QDateTime utc(QDate(2012, 6, 15), QTime(14, 23, 45, 999), Qt::UTC);
    const auto expected = QStringLiteral("2012-06-15 14:23:45 +0000");
    QCOMPARE(platform::description(utc), expected);
    QCOMPARE(format(QStringLiteral("%@"), utc.toOffsetFromUtc(7200)), expected);
    QCOMPARE(format(QStringLiteral("%@"), QVariant(utc)), expected);
    QCOMPARE(platform::description(QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59, 1), Qt::UTC)),
             QStringLiteral("1969-12-31 23:59:59 +0000"));
    QCOMPARE(platform::description(QDateTime(QDate(2024, 2, 29), QTime(0, 0), Qt::UTC)),
             QStringLiteral("2024-02-29 00:00:00 +0000"));
    QCOMPARE(platform::description(QDateTime(QDate(12345, 1, 2), QTime(3, 4, 5), Qt::UTC)),
             QStringLiteral("12345-01-02 03:04:05 +0000"));
    QCOMPARE(platform::description(QDateTime(QDate(7, 1, 2), QTime(3, 4, 5), Qt::UTC)),
             QStringLiteral("0007-01-02 03:04:05 +0000"));
    QCOMPARE(platform::description(QDateTime()), QStringLiteral("(null)"));
}

void TextDescriptionTest::aValueNestedWithoutEndIsDescribed()
{
    QVariant value(1);
    for (int level = 0; level < 1000; ++level) {
        value = QVariantList({value});
    }
    QCOMPARE(platform::description(value),
             QString(33, QChar(u'(')) + QStringLiteral("...") + QString(33, QChar(u')')));
}

TEST_CLASS(TextDescriptionTest, QCoreApplication)
#include "TextDescriptionTest.moc"
