// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PropertyList.h"

#include <QDateTime>
#include <QProcess>
#include <QTest>
#include <QTimeZone>

#include <limits>

using platform::propertyListFromData;
using platform::propertyListToXml;

namespace {

// What Python's own reader and writer of property lists make of one.
QByteArray rewritten(const QByteArray &list, const QString &format)
{
    QProcess python;
    python.start(QStringLiteral("python3"),
                 {QStringLiteral("-c"),
                  QStringLiteral("import plistlib, sys\n"
                                 "value = plistlib.loads(sys.stdin.buffer.read())\n"
                                 "form = getattr(plistlib, sys.argv[1])\n"
                                 "sys.stdout.buffer.write(plistlib.dumps(value, fmt=form))\n"),
                  format});
    python.write(list);
    python.closeWriteChannel();
    python.waitForFinished();
    return python.exitCode() == 0 ? python.readAllStandardOutput() : QByteArray();
}

} // namespace

// Other programs use other readers and writers of property lists.
class PropertyListInteroperabilityTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void othersReadWhatWeWriteAndWeWhatTheyWrite_data();
    void othersReadWhatWeWriteAndWeWhatTheyWrite();
    void othersReadCarriageReturnsThatWeWrite();
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

QTEST_GUILESS_MAIN(PropertyListInteroperabilityTest)
#include "PropertyListInteroperabilityTest.moc"
