// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QDateTime>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>

using platform::propertyListFromData;

namespace {

// The value of one element.
std::optional<QVariant> element(const QByteArray &xml)
{
    return propertyListFromData("<plist version=\"1.0\">" + xml + "</plist>");
}

std::optional<QVariant> text(const QByteArray &content)
{
    return element("<string>" + content + "</string>");
}

} // namespace

class PropertyListXmlReadingTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyKindOfValueIsRead();
    void integersOf64BitsAreReadSignedOrUnsigned_data();
    void integersOf64BitsAreReadSignedOrUnsigned();
    void realsAreReadWithAPoint_data();
    void realsAreReadWithAPoint();
    void realsAreReadWithAPointWhereTheUserWritesAComma();
    void datesAreUtcToTheSecond_data();
    void datesAreUtcToTheSecond();
    void whatWouldBecomeAnotherValueIsNoPropertyList_data();
    void whatWouldBecomeAnotherValueIsNoPropertyList();
    void dataAreBase64WithWhiteSpaceAnywhere();
    void referencesAndSectionsInTextAreResolved();
    void textIsKeptAsItStands();
    void bytesThatAreNotUtf8BecomeReplacementCharacters();
    void theLastOfEqualKeysCounts();
    void whatXmlAllowsAroundElementsIsPassedOver_data();
    void whatXmlAllowsAroundElementsIsPassedOver();
    void malformedTextIsNoPropertyList_data();
    void malformedTextIsNoPropertyList();
    void aTextCutShortAnywhereIsNoPropertyList();
};

void PropertyListXmlReadingTest::everyKindOfValueIsRead()
{
    const auto value = propertyListFromData(R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>array</key>
	<array>
		<true/>
		<false/>
		<array/>
		<dict/>
		<string/>
	</array>
	<key>data</key>
	<data>
	AAEC
	</data>
	<key>date</key>
	<date>2026-01-31T23:59:59Z</date>
	<key>integer</key>
	<integer>-42</integer>
	<key>real</key>
	<real>0.5</real>
	<key>text</key>
	<string>Grüße 🎹</string>
</dict>
</plist>
)");
    const QVariantMap expected{
        {QStringLiteral("array"),
         QVariantList{true, false, QVariantList(), QVariantMap(), QString(QLatin1String(""))}},
        {QStringLiteral("data"), QByteArray("\0\1\2", 3)},
        {QStringLiteral("date"), QDateTime({2026, 1, 31}, {23, 59, 59}, QTimeZone::utc())},
        {QStringLiteral("integer"), qlonglong(-42)},
        {QStringLiteral("real"), 0.5},
        {QStringLiteral("text"), QString::fromUtf8("Grüße 🎹")},
    };
    QVERIFY(value);
    QCOMPARE(*value, QVariant(expected));
    const auto map = value->toMap();
    QCOMPARE(map[QStringLiteral("integer")].userType(), int(QMetaType::LongLong));
    QCOMPARE(map[QStringLiteral("date")].toDateTime().timeSpec(), Qt::UTC);
    const auto array = map[QStringLiteral("array")].toList();
    QCOMPARE(array[0].userType(), int(QMetaType::Bool));
    QVERIFY(!array[4].toString().isNull());
}

void PropertyListXmlReadingTest::integersOf64BitsAreReadSignedOrUnsigned_data()
{
    QTest::addColumn<QByteArray>("digits");
    QTest::addColumn<QVariant>("expected");
    const auto row = [](const char *digits, const QVariant &expected) {
        QTest::newRow(*digits == '\0' ? "empty" : digits) << QByteArray(digits) << expected;
    };
    row("0", qlonglong(0));
    row("-0", qlonglong(0));
    row("-5", qlonglong(-5));
    row("+5", qlonglong(5));
    row(" \n12\t", qlonglong(12));
    row("007", qlonglong(7));
    row("0x1F", qlonglong(31));
    row("-0X10", qlonglong(-16));
    row("9223372036854775807", std::numeric_limits<qlonglong>::max());
    row("9223372036854775808", qulonglong(1) << 63U);
    row("18446744073709551615", std::numeric_limits<qulonglong>::max());
    row("-9223372036854775808", std::numeric_limits<qlonglong>::min());
    // The library reads numbers as C does: a leading 0 means octal, what follows the digits does
    // not count and nothing is 0.
    row("010", qlonglong(8));
    row("12a", qlonglong(12));
    row("1.5", qlonglong(1));
    row("", qlonglong(0));
}

void PropertyListXmlReadingTest::integersOf64BitsAreReadSignedOrUnsigned()
{
    QFETCH(QByteArray, digits);
    QFETCH(QVariant, expected);
    const auto value = element("<integer>" + digits + "</integer>");
    QCOMPARE(value.value_or(QVariant()), expected);
    QCOMPARE(value.value_or(QVariant()).userType(), expected.userType());
}

void PropertyListXmlReadingTest::realsAreReadWithAPoint_data()
{
    QTest::addColumn<QByteArray>("digits");
    QTest::addColumn<QVariant>("expected");
    const auto infinity = std::numeric_limits<double>::infinity();
    const auto row = [](const char *digits, const QVariant &expected) {
        QTest::newRow(*digits == '\0' ? "empty" : digits) << QByteArray(digits) << expected;
    };
    row("0.5", 0.5);
    row("-0.5", -0.5);
    row("+.5", 0.5);
    row(" 2 ", 2.0);
    row("1e-300", 1e-300);
    row("1.7976931348623157E+308", 1.7976931348623157e308);
    row("5e-324", 5e-324);
    row("inf", infinity);
    row("+infinity", infinity);
    row("-infinity", -infinity);
    // The library reads as far as there is a number.
    row("1,5", 1.0);
    row("1.5x", 1.5);
    row("", 0.0);
    row("+-1", 0.0);
}

void PropertyListXmlReadingTest::realsAreReadWithAPoint()
{
    QFETCH(QByteArray, digits);
    QFETCH(QVariant, expected);
    QCOMPARE(element("<real>" + digits + "</real>").value_or(QVariant()), expected);
    const auto nan = element("<real>nan</real>");
    QVERIFY(nan && std::isnan(nan->toDouble()));
}

void PropertyListXmlReadingTest::realsAreReadWithAPointWhereTheUserWritesAComma()
{
    const QTemporaryDir folder;
    QFile source(folder.filePath(QStringLiteral("source")));
    QVERIFY(source.open(QIODevice::WriteOnly));
    source.write(
        "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3\nEND LC_NUMERIC\n");
    source.close();
    QProcess::execute(QStringLiteral("localedef"),
                      {QStringLiteral("-c"), QStringLiteral("-f"), QStringLiteral("ANSI_X3.4-1968"),
                       QStringLiteral("-i"), source.fileName(),
                       folder.filePath(QStringLiteral("comma"))});
    const test::EnvironmentVariable path("LOCPATH", QFile::encodeName(folder.path()));
    QVERIFY(std::setlocale(LC_NUMERIC, "comma") != nullptr);
    const auto comma = std::strtod("0,5", nullptr);
    const auto value = element("<real>0.5</real>");
    const auto xml = platform::propertyListToXml(0.5);
    std::setlocale(LC_NUMERIC, "C");
    QCOMPARE(comma, 0.5); // the user does write a comma
    QCOMPARE(value, QVariant(0.5));
    QVERIFY(xml.contains("<real>0.5</real>"));
}

void PropertyListXmlReadingTest::datesAreUtcToTheSecond_data()
{
    QTest::addColumn<QByteArray>("digits");
    QTest::addColumn<QVariant>("expected");
    const auto row = [](const char *digits, const QVariant &expected) {
        QTest::newRow(*digits == '\0' ? "empty" : digits) << QByteArray(digits) << expected;
    };
    row("2026-01-31T23:59:59Z", QDateTime({2026, 1, 31}, {23, 59, 59}, QTimeZone::utc()));
    row("2024-02-29T00:00:00Z", QDateTime({2024, 2, 29}, {0, 0, 0}, QTimeZone::utc()));
    row("0001-01-01T00:00:00Z", QDateTime({1, 1, 1}, {0, 0, 0}, QTimeZone::utc()));
    row("4001-01-01T00:00:00Z", QDateTime({4001, 1, 1}, {0, 0, 0}, QTimeZone::utc()));
    row("9999-12-31T23:59:59Z", QDateTime({9999, 12, 31}, {23, 59, 59}, QTimeZone::utc()));
    row("0999-12-31T23:59:59Z", QDateTime({999, 12, 31}, {23, 59, 59}, QTimeZone::utc()));
    row("0000-02-29T00:00:00Z", QDateTime({-1, 2, 29}, {0, 0, 0}, QTimeZone::utc()));
    row("\n 2026-01-31T23:59:59Z\t", QDateTime({2026, 1, 31}, {23, 59, 59}, QTimeZone::utc()));
}

void PropertyListXmlReadingTest::datesAreUtcToTheSecond()
{
    QFETCH(QByteArray, digits);
    QFETCH(QVariant, expected);
    QCOMPARE(element("<date>" + digits + "</date>").value_or(QVariant()), expected);
}

void PropertyListXmlReadingTest::whatWouldBecomeAnotherValueIsNoPropertyList_data()
{
    QTest::addColumn<QByteArray>("xml");
    const auto row = [](const char *xml) { QTest::newRow(xml) << QByteArray(xml); };
    for (const auto *date :
         {"<date>12345-01-01T00:00:00Z</date>", "<date>999-01-01T00:00:00Z</date>",
          "<date>-001-01-01T00:00:00Z</date>", "<date>2025-02-29T00:00:00Z</date>",
          "<date>2025-13-01T00:00:00Z</date>", "<date>2025-01-01T24:00:00Z</date>",
          "<date>2025-01-01T00:00:61Z</date>", "<date>2025-01-01T00:00:00.5Z</date>",
          "<date>2025-01-01T00:00:00</date>", "<date>2025-01-01</date>", "<date>yesterday</date>",
          "<date></date>", "<date/>", "<date a=\"b\">yesterday</date>",
          "<date><![CDATA[2025-01-01T00:00:00Z]]></date>"}) {
        row(date);
    }
    for (const auto *integer :
         {"<integer>18446744073709551616</integer>", "<integer> +99999999999999999999</integer>",
          "<integer>0x10000000000000000</integer>", "<integer>-9223372036854775809</integer>",
          "<integer>-99999999999999999999</integer>"}) {
        row(integer);
    }
}

void PropertyListXmlReadingTest::whatWouldBecomeAnotherValueIsNoPropertyList()
{
    QFETCH(QByteArray, xml);
    QVERIFY(!element(xml));
}

void PropertyListXmlReadingTest::dataAreBase64WithWhiteSpaceAnywhere()
{
    QCOMPARE(element("<data>\n\tT3 N0\r\n cmVs\n</data>"), QVariant(QByteArray("Ostrel")));
    QCOMPARE(element("<data>T3N0cg==</data>"), QVariant(QByteArray("Ostr")));
    QCOMPARE(element("<data/>"), QVariant(QByteArray("")));
    QVERIFY(!element("<data>T3N0<mVs</data>"));
}

void PropertyListXmlReadingTest::referencesAndSectionsInTextAreResolved()
{
    QCOMPARE(text("&lt;&gt;&amp;&quot;&apos;"), QVariant(QStringLiteral("<>&\"'")));
    QCOMPARE(text("&#65;&#x42;&#xe9;&#x20AC;&#127929;"), QVariant(QString::fromUtf8("ABé€🎹")));
    QCOMPARE(text("a<![CDATA[<b> & ]]]]>c"), QVariant(QStringLiteral("a<b> & ]]c")));
    QCOMPARE(text("a<!-- <b> -->c"), QVariant(QStringLiteral("ac")));
    for (const auto *bad :
         {"a&b", "&;", "&lt", "&unknown;", "&#;", "&#x;", "&#0;", "&#x110000;", "&#99999999999;",
          "&averyveryverylongname;", "<![CDATA[", "<!--", "<?a?>"}) {
        QVERIFY2(!text(bad), bad);
    }
}

void PropertyListXmlReadingTest::textIsKeptAsItStands()
{
    const QByteArray odd(" \t a\r\nb\rc\n\x01\x1F \xEF\xBB\xBF\x7F ");
    QCOMPARE(text(odd)->toString().toUtf8(), odd);
    const auto marks = QString(2, QChar(0xFEFF)) + QLatin1Char('a');
    QCOMPARE(text(marks.toUtf8()), QVariant(marks)); // no byte order marks here
    QCOMPARE(element("<dict><key> a </key><string> </string></dict>"),
             QVariant(QVariantMap{{QStringLiteral(" a "), QStringLiteral(" ")}}));
}

void PropertyListXmlReadingTest::bytesThatAreNotUtf8BecomeReplacementCharacters()
{
    QCOMPARE(text("a\xE9z"), QVariant(QString::fromUtf8("a\uFFFDz")));
    QCOMPARE(text("a\xC3"), QVariant(QString::fromUtf8("a\uFFFD")));
}

void PropertyListXmlReadingTest::theLastOfEqualKeysCounts()
{
    QCOMPARE(element("<dict><key>a</key><true/><key>a</key><false/></dict>"),
             QVariant(QVariantMap{{QStringLiteral("a"), false}}));
    QCOMPARE(element("<dict><key>b</key><true/><key>a</key><false/><key>b</key><false/></dict>"),
             QVariant(QVariantMap{{QStringLiteral("a"), false}, {QStringLiteral("b"), false}}));
}

void PropertyListXmlReadingTest::whatXmlAllowsAroundElementsIsPassedOver_data()
{
    QTest::addColumn<QByteArray>("xml");
    const auto row = [](const char *name, const QByteArray &xml) { QTest::newRow(name) << xml; };
    const QByteArray plain = "<plist><array><true/></array></plist>";
    row("plain", plain);
    row("no plist element", "<array><true/></array>");
    row("white space first", "\n \t" + plain);
    row("byte order mark", "\xEF\xBB\xBF" + plain);
    row("comments", "<!-- <a> --><plist><!----><array><!-- - --><true/></array><!----></plist>");
    row("instructions", "<?xml?><?a b?><plist><?c?><array><true/><?d?></array></plist>");
    row("document type", "<!DOCTYPE plist SYSTEM \"a b\">" + plain);
    row("attributes", R"(<plist version='1.0' a="/"><array b="" ><true c=''/></array ></plist >)");
    row("opened and closed", "<plist><array><true></true></array></plist>");
    row("space in empty element", "<plist><array><true> \n</true></array></plist>");
    row("white space behind the list", plain + "\r\n\t ");
}

void PropertyListXmlReadingTest::whatXmlAllowsAroundElementsIsPassedOver()
{
    QFETCH(QByteArray, xml);
    QCOMPARE(propertyListFromData(xml), QVariant(QVariantList{true}));
}

void PropertyListXmlReadingTest::malformedTextIsNoPropertyList_data()
{
    // Of a single value the library reads only the element, and it drops a key without value.
    QTest::addColumn<QByteArray>("xml");
    for (const auto *xml : {"",
                            " ",
                            "text",
                            "<",
                            "<>",
                            "</>",
                            "< plist/>",
                            "<plist>",
                            "<plist/>",
                            "</plist>",
                            "<plist></plist>",
                            "<plist>text</plist>",
                            "<plist><true/>",
                            "<plist><unknown/></plist>",
                            "<plist></true></plist>",
                            "<plist><TRUE/></plist>",
                            "<plist><array></plist>",
                            "<plist><array></dict></plist>",
                            "<plist><array>text</array></plist>",
                            "<plist><array/></dict>",
                            "\xFF\xFE<\x01p\x01", // UTF-16, which the library does not read
                            "<plist><array><true/></array>",
                            "<plist><dict><true/></dict></plist>",
                            "<plist><dict><string>a</string><true/></dict></plist>",
                            "<plist><dict><key>a<true/></key></dict></plist>",
                            "<plist><dict><key>a</string><true/></dict></plist>",
                            "<plist><dict></array></plist>",
                            "<plist><string>a<b/></string></plist>",
                            "<plist><string>a</strin></plist>",
                            "<plist><string>a</stringy></plist>",
                            "<plist version=\"1.0><true/></plist>",
                            "<!DOCTYPE plist [<plist><true/></plist>",
                            "<!DOCTYPE plist",
                            "<!-- <plist><true/></plist>",
                            "<?xml <plist><true/></plist>",
                            "<html><body>404</body></html>",
                            "{ a = b; }",
                            "{\"a\": 1}",
                            "bplist"}) {
        QTest::newRow(*xml == '\0' ? "nothing" : xml) << QByteArray(xml);
    }
}

void PropertyListXmlReadingTest::malformedTextIsNoPropertyList()
{
    QFETCH(QByteArray, xml);
    QVERIFY(!propertyListFromData(xml));
}

void PropertyListXmlReadingTest::aTextCutShortAnywhereIsNoPropertyList()
{
    const QByteArray whole =
        "<?xml version=\"1.0\"?><!DOCTYPE plist SYSTEM \"a\"><!-- b --><plist version='1'><dict>"
        "<key>a</key><array><integer>1</integer><real>2</real></array><key>&lt;</key><data>AAAA"
        "</data><key>c</key><string>d<![CDATA[e]]>&amp;<!-- f --></string><key>g</key><true/>"
        "</dict></plist>";
    QVERIFY(propertyListFromData(whole));
    for (int size = 0; size < whole.size(); ++size) {
        QVERIFY2(!propertyListFromData(whole.left(size)), whole.left(size).constData());
    }
}

TEST_CLASS(PropertyListXmlReadingTest, QCoreApplication)
#include "PropertyListXmlReadingTest.moc"
