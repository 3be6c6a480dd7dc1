// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QDateTime>
#include <QStringList>
#include <QTest>
#include <QUrl>

#include <cmath>
#include <limits>
#include <vector>

using platform::propertyListFromData;
using platform::propertyListToXml;

namespace {

const QByteArray head("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                      "<plist version=\"1.0\">\n");
const QByteArray tail("</plist>\n");

// What is written between head and tail.
QByteArray body(const QVariant &value)
{
    const auto xml = propertyListToXml(value);
    return xml.startsWith(head) && xml.endsWith(tail)
               ? xml.mid(head.size(), xml.size() - head.size() - tail.size())
               : "unexpected: " + xml;
}

QVariant writtenAndRead(const QVariant &value)
{
    return propertyListFromData(propertyListToXml(value)).value_or(QVariant());
}

} // namespace

class PropertyListWritingTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theFormIsTheOneOfThePlatform();
    void everyKindOfValueIsReadBackAsItWas_data();
    void everyKindOfValueIsReadBackAsItWas();
    void realsAreWrittenExactly();
    void otherNumberTypesAreWrittenAsIntegersAndReals();
    void datesAreWrittenInUtcToTheSecond();
    void aZeroKeepsItsSign();
    void yearsHaveFourDigits();
    void whatNoFormCanHoldBecomesReplacementCharacters_data();
    void whatNoFormCanHoldBecomesReplacementCharacters();
    void whatXmlCannotHoldIsWrittenInTheBinaryForm_data();
    void whatXmlCannotHoldIsWrittenInTheBinaryForm();
    void aNullIsLeftOut();
    void whatIsNoPropertyListIsNotWritten_data();
    void whatIsNoPropertyListIsNotWritten();
    void dataAreBrokenIntoLines();
};

void PropertyListWritingTest::theFormIsTheOneOfThePlatform()
{
    const QVariantMap value{
        {QStringLiteral("b"), QVariantList{true, qlonglong(-1), QVariantMap(), QVariantList()}},
        {QStringLiteral("a<&>\"'"), QStringLiteral("<&>\"'")},
        {QStringLiteral("c"), QByteArray("Ostrel")},
        {QStringLiteral("d"), QVariantMap{{QStringLiteral("e"), QString()}}},
    };
    QCOMPARE(body(value), QByteArray("<dict>\n"
                                     "\t<key>a&lt;&amp;&gt;\"'</key>\n"
                                     "\t<string>&lt;&amp;&gt;\"'</string>\n"
                                     "\t<key>b</key>\n"
                                     "\t<array>\n"
                                     "\t\t<true/>\n"
                                     "\t\t<integer>-1</integer>\n"
                                     "\t\t<dict/>\n"
                                     "\t\t<array/>\n"
                                     "\t</array>\n"
                                     "\t<key>c</key>\n"
                                     "\t<data>\n"
                                     "\tT3N0cmVs\n"
                                     "\t</data>\n"
                                     "\t<key>d</key>\n"
                                     "\t<dict>\n"
                                     "\t\t<key>e</key>\n"
                                     "\t\t<string></string>\n"
                                     "\t</dict>\n"
                                     "</dict>\n"));
}

void PropertyListWritingTest::everyKindOfValueIsReadBackAsItWas_data()
{
    QTest::addColumn<QVariant>("value");
    const auto row = [](const char *name, const QVariant &value) { QTest::newRow(name) << value; };
    row("true", true);
    row("false", false);
    row("zero", qlonglong(0));
    row("negative", qlonglong(-123456789012));
    row("least", std::numeric_limits<qlonglong>::min());
    row("greatest signed", std::numeric_limits<qlonglong>::max());
    row("least unsigned", qulonglong(1) << 63U);
    row("greatest", std::numeric_limits<qulonglong>::max());
    row("infinite", std::numeric_limits<double>::infinity());
    row("negative infinite", -std::numeric_limits<double>::infinity());
    row("least real", std::numeric_limits<double>::denorm_min());
    row("greatest real", std::numeric_limits<double>::max());
    row("empty text", QString(QLatin1String("")));
    row("white space", QStringLiteral(" \t\n a \r\n b\r "));
    row("markup", QStringLiteral("<![CDATA[&lt;]]>&#0;"));
    row("every plane", QString::fromUtf8("a\u007F\u0080é\u0800€\uD7FF\uE000\uFDD0\uFEFF\uFFFD"
                                         "\U00010000🎹\U0010FFFF"));
    row("empty data", QByteArray(""));
    row("data", QByteArray("\0\xFF\0<>", 5));
    row("date", QDateTime({2026, 1, 31}, {23, 59, 59}, Qt::UTC));
    row("first date", QDateTime({1, 1, 1}, {0, 0, 0}, Qt::UTC));
    row("late date", QDateTime({9999, 12, 31}, {23, 59, 59}, Qt::UTC));
    row("empty array", QVariantList());
    row("empty dictionary", QVariantMap());
    row("empty key", QVariantMap{{QString(QLatin1String("")), true}});
    row("nested", QVariantList{QVariantMap{{QStringLiteral("a"), QVariantList{QVariantMap()}}}});
    row("UID", QVariantMap{{QStringLiteral("CF$UID"), qlonglong(3)}});
}

void PropertyListWritingTest::everyKindOfValueIsReadBackAsItWas()
{
    QFETCH(QVariant, value);
    const auto read = writtenAndRead(value);
    QCOMPARE(read, value);
    QCOMPARE(read.userType(), value.userType());
}

void PropertyListWritingTest::realsAreWrittenExactly()
{
    QCOMPARE(body(0.5), QByteArray("<real>0.5</real>\n"));
    QCOMPARE(body(2.0), QByteArray("<real>2</real>\n"));
    QCOMPARE(body(std::numeric_limits<double>::infinity()), QByteArray("<real>+infinity</real>\n"));
    QVERIFY(std::isnan(writtenAndRead(std::nan("")).toDouble()));
    for (const auto real :
         {0.1 + 0.2, 1.0 / 3, 1e21, 1e-7, 123456789.123456789, 9007199254740993.0}) {
        QVERIFY(writtenAndRead(real).toDouble() == real);
    }
}

void PropertyListWritingTest::otherNumberTypesAreWrittenAsIntegersAndReals()
{
    QCOMPARE(body(-7), QByteArray("<integer>-7</integer>\n"));
    QCOMPARE(body(4000000000U), QByteArray("<integer>4000000000</integer>\n"));
    QCOMPARE(body(QVariant::fromValue(short(-7))), QByteArray("<integer>-7</integer>\n"));
    QCOMPARE(body(QVariant::fromValue(ushort(65535))), QByteArray("<integer>65535</integer>\n"));
    QCOMPARE(body(QVariant::fromValue(-7L)), QByteArray("<integer>-7</integer>\n"));
    QCOMPARE(body(QVariant::fromValue(7UL)), QByteArray("<integer>7</integer>\n"));
    QCOMPARE(body(0.5F), QByteArray("<real>0.5</real>\n"));
    QCOMPARE(body(QStringList{QStringLiteral("a")}),
             QByteArray("<array>\n\t<string>a</string>\n</array>\n"));
}

void PropertyListWritingTest::datesAreWrittenInUtcToTheSecond()
{
    const QDateTime east({2026, 1, 1}, {1, 30, 0, 999}, Qt::OffsetFromUTC, 7200);
    QCOMPARE(body(east), QByteArray("<date>2025-12-31T23:30:00Z</date>\n"));
    QCOMPARE(writtenAndRead(east), QVariant(QDateTime({2025, 12, 31}, {23, 30}, Qt::UTC)));
}

void PropertyListWritingTest::aZeroKeepsItsSign()
{
    QCOMPARE(body(-0.0), QByteArray("<real>-0.0</real>\n"));
    QVERIFY(std::signbit(writtenAndRead(-0.0).toDouble()));
    QVERIFY(!std::signbit(writtenAndRead(0.0).toDouble()));
}

void PropertyListWritingTest::yearsHaveFourDigits()
{
    QCOMPARE(body(QDateTime({1, 2, 3}, {4, 5, 6}, Qt::UTC)),
             QByteArray("<date>0001-02-03T04:05:06Z</date>\n"));
    const auto date = [](int year) { return QDateTime({year, 12, 31}, {23, 59, 59}, Qt::UTC); };
    QCOMPARE(body(QVariantMap{{QStringLiteral("a"), date(99)},
                              {QStringLiteral("b"), QStringLiteral("<date>9-1-1</date>")},
                              {QStringLiteral("c"), QVariantList{date(999), date(1000)}}}),
             QByteArray("<dict>\n"
                        "\t<key>a</key>\n"
                        "\t<date>0099-12-31T23:59:59Z</date>\n"
                        "\t<key>b</key>\n"
                        "\t<string>&lt;date&gt;9-1-1&lt;/date&gt;</string>\n"
                        "\t<key>c</key>\n"
                        "\t<array>\n"
                        "\t\t<date>0999-12-31T23:59:59Z</date>\n"
                        "\t\t<date>1000-12-31T23:59:59Z</date>\n"
                        "\t</array>\n"
                        "</dict>\n"));
}

void PropertyListWritingTest::whatNoFormCanHoldBecomesReplacementCharacters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto replacement = QString(QChar(0xFFFD));
    const QChar high(0xD83C);
    const QChar low(0xDFB9);
    QTest::newRow("zero") << QString(QChar(0)) << replacement;
    QTest::newRow("first half at the end") << QString(high) << replacement;
    QTest::newRow("first half, letter")
        << QString(high) + QLatin1Char('a') << replacement + QLatin1Char('a');
    QTest::newRow("second half") << QString(low) + QLatin1Char('a')
                                 << replacement + QLatin1Char('a');
    QTest::newRow("first half twice") << QString(high) + high + low << replacement + high + low;
}

void PropertyListWritingTest::whatNoFormCanHoldBecomesReplacementCharacters()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(writtenAndRead(text).toString(), expected);
    QCOMPARE(writtenAndRead(QVariantMap{{text, true}}), QVariant(QVariantMap{{expected, true}}));
}

void PropertyListWritingTest::whatXmlCannotHoldIsWrittenInTheBinaryForm_data()
{
    QTest::addColumn<QVariantMap>("dictionary");
    const auto row = [](const QString &name, const QVariantMap &dictionary) {
        QTest::newRow(qUtf8Printable(name)) << dictionary;
    };
    std::vector<ushort> codes{0xFFFE, 0xFFFF};
    for (ushort code = 1; code < 0x20; ++code) {
        if (code != '\t' && code != '\n' && code != '\r') {
            codes.push_back(code);
        }
    }
    for (const auto code : codes) {
        const auto text = QLatin1Char('a') + QString(QChar(code)) + QChar(0x20AC);
        const auto name = QStringLiteral("U+%1").arg(code, 4, 16, QLatin1Char('0'));
        row(name, {{QStringLiteral("a"), text}});
        row(name + QStringLiteral(" in a key"), {{text, qlonglong(1)}});
    }
    for (const auto year : {-10000, -2, -1, 10000, 12345, 100000}) {
        const QDateTime date({year, 2, 3}, {4, 5, 6}, Qt::UTC);
        row(QStringLiteral("year %1").arg(year), {{QStringLiteral("a"), QVariantList{date}}});
    }
    row(QStringLiteral("with everything else"),
        {{QStringLiteral("a"), QStringLiteral("\x1B")},
         {QStringLiteral("b"),
          QVariantList{QDateTime({1, 2, 3}, {4, 5, 6}, Qt::UTC), 0.1, qlonglong(-5),
                       std::numeric_limits<qulonglong>::max(), QByteArray(""), true,
                       QVariantMap{{QStringLiteral("CF$UID"), qlonglong(3)}}}}});
}

void PropertyListWritingTest::whatXmlCannotHoldIsWrittenInTheBinaryForm()
{
    QFETCH(QVariantMap, dictionary);
    const auto data = platform::propertyListToData(dictionary);
    QVERIFY(data.startsWith("bplist00"));
    QCOMPARE(propertyListFromData(data), std::optional<QVariant>(dictionary));
    QCOMPARE(propertyListToXml(dictionary), QByteArray());
}

void PropertyListWritingTest::aNullIsLeftOut()
{
    const auto key = QStringLiteral("a");
    QCOMPARE(body(QVariantList{true, QVariant(), false}),
             QByteArray("<array>\n\t<true/>\n\t<false/>\n</array>\n"));
    QCOMPARE(writtenAndRead(QVariantMap{{key, QVariant()}, {QStringLiteral("b"), true}}),
             QVariant(QVariantMap{{QStringLiteral("b"), true}}));
    QCOMPARE(writtenAndRead(QVariantMap{{key, QVariant()}}), QVariant(QVariantMap()));
}

void PropertyListWritingTest::whatIsNoPropertyListIsNotWritten_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("nothing") << QVariant();
    QTest::newRow("address") << QVariant(QUrl(QStringLiteral("http://example.org")));
    QTest::newRow("character") << QVariant(QChar(0x61));
    QTest::newRow("date that is none") << QVariant(QDateTime());
    QTest::newRow("date after year 9999") << QVariant(QDateTime({10000, 1, 1}, {0, 0}, Qt::UTC));
    QTest::newRow("date before year 1") << QVariant(QDateTime({-1, 1, 1}, {0, 0}, Qt::UTC));
}

void PropertyListWritingTest::whatIsNoPropertyListIsNotWritten()
{
    QFETCH(QVariant, value);
    QCOMPARE(propertyListToXml(value), QByteArray());
    if (value.isValid()) {
        QCOMPARE(propertyListToXml(QVariantList{value}), QByteArray());
        QCOMPARE(propertyListToXml(QVariantMap{{QStringLiteral("a"), value}}), QByteArray());
    }
}

void PropertyListWritingTest::dataAreBrokenIntoLines()
{
    const QByteArray data(1000, 'x');
    for (const auto depth : {0, 1, 5, 8, 20}) {
        QVariant value = data;
        for (auto i = 0; i < depth; ++i) {
            value = QVariantList{value};
        }
        for (const auto &line : propertyListToXml(value).split('\n')) {
            if (line.contains("eHh4")) {
                const auto tabs = line.count('\t');
                QVERIFY(tabs > 8 || line.size() + 7 * tabs <= 76);
            }
        }
        QCOMPARE(writtenAndRead(value), value);
    }
}

TEST_CLASS(PropertyListWritingTest, QCoreApplication)
#include "PropertyListWritingTest.moc"
