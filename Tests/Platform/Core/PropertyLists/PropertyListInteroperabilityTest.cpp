// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QDateTime>
#include <QProcess>
#include <QTest>
#include <QTimeZone>

#include <limits>

using platform::propertyListFromData;
using platform::propertyListToData;
using platform::propertyListToXml;

namespace {

// What a program prints; null where it fails.
QByteArray python(const char *program, const QStringList &arguments, const QByteArray &input = {})
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(
        QStringLiteral("python3"),
        QStringList{QStringLiteral("-c"), QStringLiteral("import datetime, plistlib, sys\n") +
                                              QString::fromLatin1(program)} +
            arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished();
    return process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

// What Python's own reader and writer of property lists make of one.
QByteArray rewritten(const QByteArray &list, const QString &format)
{
    return python("value = plistlib.loads(sys.stdin.buffer.read())\n"
                  "form = getattr(plistlib, sys.argv[1])\n"
                  "sys.stdout.buffer.write(plistlib.dumps(value, fmt=form))\n",
                  {format}, list);
}

// The values of an array, as Python reads and prints them.
QByteArrayList valuesIn(const QByteArray &list)
{
    return python("values = plistlib.loads(sys.stdin.buffer.read())\n"
                  "print('\\n'.join(ascii(value) for value in values), end='')\n",
                  {}, list)
        .split('\n');
}

} // namespace

// Other programs use other readers and writers of property lists.
class PropertyListInteroperabilityTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void othersReadWhatWeWriteAndWeWhatTheyWrite_data();
    void othersReadWhatWeWriteAndWeWhatTheyWrite();
    void othersReadCarriageReturnsThatWeWrite();
    void whatOthersWroteIsTheSameAfterItIsWrittenAgain_data();
    void whatOthersWroteIsTheSameAfterItIsWrittenAgain();
    void aLargeListIsReadAlikeInEitherForm();
};

void PropertyListInteroperabilityTest::othersReadWhatWeWriteAndWeWhatTheyWrite_data()
{
    QTest::addColumn<QVariant>("value");
    const auto row = [](const char *name, const QVariant &value) { QTest::newRow(name) << value; };
    row("true", true);
    row("false", false);
    row("zero", qlonglong(0));
    row("negative", qlonglong(-5));
    row("least", std::numeric_limits<qlonglong>::min());
    row("32 bits", qlonglong(4294967295));
    row("greatest signed", std::numeric_limits<qlonglong>::max());
    row("greatest", std::numeric_limits<qulonglong>::max());
    row("real", 0.5);
    row("negative real", -1234.25);
    row("text", QStringLiteral("<a> & \"b\" 'c'\t\n d "));
    row("empty text", QString(QLatin1String("")));
    row("letters of every length", QString::fromUtf8("aé€🎹"));
    row("long text", QString(1000, QLatin1Char('a')));
    row("data", QByteArray("\0\xFF\0<>", 5));
    row("much data", QByteArray(1000, 'x'));
    row("date", QDateTime({2026, 1, 31}, {23, 59, 59}, QTimeZone::utc()));
    row("early date", QDateTime({1971, 2, 3}, {4, 5, 6}, QTimeZone::utc()));
    row("empty array", QVariantList());
    row("empty dictionary", QVariantMap());
    row("dictionary", QVariantMap{{QStringLiteral("<é>"), QVariantList{true, qlonglong(1)}},
                                  {QStringLiteral("b"), QVariantMap()}});
    row("UID", QVariantMap{{QStringLiteral("CF$UID"), qlonglong(7)}});
}

void PropertyListInteroperabilityTest::othersReadWhatWeWriteAndWeWhatTheyWrite()
{
    QFETCH(QVariant, value);
    const QVariantList list{value};
    const auto xml = propertyListToXml(list);
    for (const auto *format : {"FMT_XML", "FMT_BINARY"}) {
        const auto read = propertyListFromData(rewritten(xml, QString::fromLatin1(format)));
        QCOMPARE(read, QVariant(list));
        QCOMPARE(read->toList().constFirst().userType(), value.userType());
    }
}

void PropertyListInteroperabilityTest::othersReadCarriageReturnsThatWeWrite()
{
    const QVariantList list{QStringLiteral("a\r\nb\rc")};
    const auto binary = rewritten(propertyListToXml(list), QStringLiteral("FMT_BINARY"));
    QCOMPARE(propertyListFromData(binary), QVariant(list)); // Python's own XML loses them
}

void PropertyListInteroperabilityTest::whatOthersWroteIsTheSameAfterItIsWrittenAgain_data()
{
    QTest::addColumn<QString>("form");
    QTest::addColumn<QByteArrayList>("values");
    QTest::addColumn<bool>("becomesXml");
    const QByteArrayList values{
        "nan", "inf", "-inf", "5e-324", "-1e-310", "2.2250738585072014e-308",
        "1.7976931348623157e+308", "0.1", "0.30000000000000004", "123456789.12345679", "1e+16",
        "9007199254740992.0", "1e+22", "-9223372036854775808", "9223372036854775807",
        "9223372036854775808", "18446744073709551615", "-1", "0",
        // Dates without leading zeros in front of the year are no dates to most.
        "datetime.datetime(1, 1, 1, 0, 0)", "datetime.datetime(4, 2, 29, 23, 59, 59)",
        "datetime.datetime(99, 12, 31, 0, 0)", "datetime.datetime(999, 1, 2, 3, 4, 5)",
        "datetime.datetime(1000, 1, 1, 0, 0)", "datetime.datetime(1900, 2, 28, 0, 0)",
        "datetime.datetime(2000, 2, 29, 0, 0)", "datetime.datetime(9999, 12, 31, 23, 59, 59)",
        "b''", "b'\\x00\\xff'", "''", "' \\t\\n '",
        "'\\x7f\\x80\\u2028\\ufdd0\\ufffd\\U0001fffe\\U0010ffff'", "{'': ''}", "{}",
        "[[], {}, [{}]]"};
    // Python writes equal numbers once in the binary form.
    for (const auto *zero : {"0.0", "-0.0"}) {
        for (const auto *form : {"FMT_XML", "FMT_BINARY"}) {
            QTest::addRow("%s, %s", form, zero)
                << QString::fromLatin1(form) << QByteArrayList{zero} + values << true;
        }
    }
    QTest::newRow("control characters")
        << QStringLiteral("FMT_BINARY")
        << QByteArrayList{"'a\\x01\\x1b'", "{'\\x02': '\\ufffe\\uffff'}", "-0.0"} + values << false;
}

void PropertyListInteroperabilityTest::whatOthersWroteIsTheSameAfterItIsWrittenAgain()
{
    QFETCH(QString, form);
    QFETCH(QByteArrayList, values);
    QFETCH(bool, becomesXml);
    const auto list = python("from math import inf, nan\n"
                             "values = [eval(line) for line in sys.stdin]\n"
                             "form = getattr(plistlib, sys.argv[1])\n"
                             "sys.stdout.buffer.write(plistlib.dumps(values, fmt=form))\n",
                             {form}, values.join('\n'));
    QCOMPARE(valuesIn(list), values);
    const auto first = propertyListFromData(list);
    QVERIFY(first);
    const auto written = propertyListToData(*first);
    QCOMPARE(written.startsWith("<?xml"), becomesXml);
    QCOMPARE(valuesIn(written), values);
    const auto second = propertyListFromData(written);
    QVERIFY(second);
    QCOMPARE(propertyListToData(*second), written);
}

void PropertyListInteroperabilityTest::aLargeListIsReadAlikeInEitherForm()
{
    QVariantList list;
    for (auto i = 0; i < 1000; ++i) {
        const auto text = QStringLiteral("entry %1").arg(i);
        list << QVariantMap{{QStringLiteral("key"), text}, {text, qlonglong(i) * i}};
    }
    const auto xml = propertyListToXml(list);
    QCOMPARE(propertyListFromData(rewritten(xml, QStringLiteral("FMT_XML"))), QVariant(list));
    QCOMPARE(propertyListFromData(rewritten(xml, QStringLiteral("FMT_BINARY"))), QVariant(list));
}

TEST_CLASS(PropertyListInteroperabilityTest, QCoreApplication)
#include "PropertyListInteroperabilityTest.moc"
