// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bus/DBusValue.h"

#include "Tests/Support/TestProgram.h"

#include <QDateTime>
#include <QPoint>
#include <QTest>
#include <QTimeZone>
#include <QUrl>

using platform::dbusDictionary;

namespace {

QString key()
{
    return QStringLiteral("key");
}

// What becomes of one value on its way to the bus.
QVariant carried(const QVariant &value)
{
    return dbusDictionary({{key(), value}}).value().value(key());
}

// How deep the lists in a value go.
int depthOf(const QVariant &value)
{
    const auto list = value.toList();
    return list.isEmpty() ? 0 : 1 + depthOf(list.first());
}

} // namespace

class DBusValueTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void plainValuesAreCarriedAsTheyAre_data();
    void plainValuesAreCarriedAsTheyAre();
    void otherNumbersBecomeLarger();
    void valuesWithATextBecomeText();
    void valuesWithoutATextAreLeftOut();
    void whatIsNestedTooDeepIsLeftOut();
    void tooMuchIsNotCarriedAtAll();
};

void DBusValueTest::plainValuesAreCarriedAsTheyAre_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("truth value") << QVariant(true);
    QTest::newRow("byte") << QVariant::fromValue<uchar>(7);
    QTest::newRow("short") << QVariant::fromValue<short>(-7);
    QTest::newRow("int") << QVariant(-7);
    QTest::newRow("uint") << QVariant(7U);
    QTest::newRow("long long") << QVariant(-7LL);
    QTest::newRow("ulong long") << QVariant(7ULL);
    QTest::newRow("real") << QVariant(0.5);
    QTest::newRow("text") << QVariant(QStringLiteral("Grüße"));
    QTest::newRow("data") << QVariant(QByteArray("\x00\xff", 2));
    QTest::newRow("list") << QVariant(QVariantList({1, QStringLiteral("a")}));
    QTest::newRow("dictionary") << QVariant(QVariantMap({{key(), QVariantList({1})}}));
}

void DBusValueTest::plainValuesAreCarriedAsTheyAre()
{
    QFETCH(QVariant, value);
    const auto result = carried(value);
    QCOMPARE(result.userType(), value.userType());
    QCOMPARE(result, value);
}

void DBusValueTest::otherNumbersBecomeLarger()
{
    QCOMPARE(carried(QVariant::fromValue<long>(-5)), QVariant(-5LL));
    QCOMPARE(carried(QVariant::fromValue<ulong>(5)), QVariant(5ULL));
    QCOMPARE(carried(QVariant::fromValue<signed char>(-5)), QVariant(-5LL));
    QCOMPARE(carried(QVariant(0.5F)), QVariant(0.5));
}

void DBusValueTest::valuesWithATextBecomeText()
{
    QCOMPARE(carried(QUrl(QStringLiteral("https://example.com"))),
             QVariant(QStringLiteral("https://example.com")));
    const QDateTime date(QDate(2012, 6, 15), QTime(14, 23, 45), QTimeZone::utc());
    QCOMPARE(carried(date).userType(), static_cast<int>(QMetaType::QString));
    QVERIFY(carried(date).toString().startsWith(QStringLiteral("2012-06-15T14:23:45")));
    QCOMPARE(carried(QString()), QVariant(QString()));
}

void DBusValueTest::valuesWithoutATextAreLeftOut()
{
    const auto result =
        dbusDictionary({{QStringLiteral("point"), QPoint(1, 2)},
                        {QStringLiteral("nothing"), QVariant()},
                        {QStringLiteral("list"), QVariantList({QPoint(), 1, QVariant()})},
                        {QStringLiteral("number"), 1}});
    QCOMPARE(result.value(), (QVariantMap{{QStringLiteral("list"), QVariantList({1})},
                                          {QStringLiteral("number"), 1}}));
}

void DBusValueTest::whatIsNestedTooDeepIsLeftOut()
{
    const auto nested = [](int depth) {
        QVariant value(1);
        for (int level = 0; level < depth; ++level) {
            value = QVariantList({value});
        }
        return value;
    };
    QCOMPARE(depthOf(carried(nested(15))), 15);
    QVERIFY(depthOf(carried(nested(1000))) <= 16);
}

void DBusValueTest::tooMuchIsNotCarriedAtAll()
{
    QVERIFY(dbusDictionary({{key(), QString(1000000, QChar(u'x'))}}));
    QVERIFY(!dbusDictionary({{key(), QString(10000000, QChar(u'x'))}}));
    QVERIFY(!dbusDictionary({{key(), QByteArray(10000000, 'x')}}));
    QVERIFY(!dbusDictionary({{QString(10000000, QChar(u'x')), 1}}));
    QVariantList many;
    for (int count = 0; count < 1000000; ++count) {
        many << count;
    }
    QVERIFY(!dbusDictionary({{key(), many}}));
}

TEST_CLASS(DBusValueTest, QCoreApplication)
#include "DBusValueTest.moc"
