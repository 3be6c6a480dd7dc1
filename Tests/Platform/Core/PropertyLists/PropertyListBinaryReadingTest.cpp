// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Platform/Core/PropertyLists/BinaryPropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QDateTime>
#include <QTest>
#include <QTimeZone>

#include <cmath>
#include <limits>

using platform::propertyListFromData;

namespace {

// The value of one object.
std::optional<QVariant> object(const QByteArray &bytes)
{
    BinaryPropertyList list;
    list.objects = {bytes};
    return propertyListFromData(list.data());
}

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

} // namespace

class PropertyListBinaryReadingTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void scalarsAreRead_data();
    void scalarsAreRead();
    void aNumberThatIsNoneAndADateThatIsNone();
    void countsFrom15OnStandInAnInteger();
    void containersAreRead();
    void sharedObjectsAreReadOnce();
    void anyWidthOfOffsetsAndReferencesIsRead();
    void aUidIsADictionary();
    void malformedObjectsAreNoPropertyList_data();
    void malformedObjectsAreNoPropertyList();
    void unsoundTrailersAreNoPropertyList();
    void dataCutShortAnywhereAreNoPropertyList();
};

void PropertyListBinaryReadingTest::scalarsAreRead_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QVariant>("expected");
    const auto row = [](const char *digits, const QVariant &expected) {
        QTest::newRow(digits) << hex(digits) << expected;
    };
    row("08", false);
    row("09", true);
    row("10FF", qlonglong(255));
    row("11FFFF", qlonglong(65535));
    row("12FFFFFFFF", qlonglong(4294967295));
    row("137FFFFFFFFFFFFFFF", std::numeric_limits<qlonglong>::max());
    row("13FFFFFFFFFFFFFFFB", qlonglong(-5));
    row("138000000000000000", std::numeric_limits<qlonglong>::min());
    row("1400000000000000000000000000000007", qlonglong(7));
    row("1400000000000000008000000000000000", qulonglong(1) << 63U);
    row("140000000000000000FFFFFFFFFFFFFFFF", std::numeric_limits<qulonglong>::max());
    row("223F000000", 0.5);
    row("23BFE0000000000000", -0.5);
    row("237FF0000000000000", std::numeric_limits<double>::infinity());
    row("330000000000000000", QDateTime({2001, 1, 1}, {0, 0, 0}, QTimeZone::utc()));
    row("33C1CDD8D6A0000000", QDateTime({1969, 4, 7}, {13, 33, 52}, QTimeZone::utc()));
    row("333FF8000000000000", QDateTime({2001, 1, 1}, {0, 0, 1}, QTimeZone::utc())); // 1.5 s
    row("33BFE0000000000000", QDateTime({2001, 1, 1}, {0, 0, 0}, QTimeZone::utc())); // -0.5 s
    row("3341F0000000000000",
        QDateTime({2137, 2, 7}, {6, 28, 16}, QTimeZone::utc())); // beyond 32 bits
    row("43000102", QByteArray("\0\1\2", 3));
    row("40", QByteArray(""));
    row("50", QString(QLatin1String("")));
    row("33C24CF7F01E400000", QDateTime({-5886, 8, 27}, {8, 19, 12}, QTimeZone::utc()));
    row("3342874876E8000000", QDateTime({103404, 12, 19}, {0, 53, 20}, QTimeZone::utc()));
    // The library takes bytes for UTF-8.
    row("5441C3A942", QString::fromUtf8("AéB"));
    row("6320ACD83CDFB9", QString(QChar(0x20AC)) + QString::fromUtf8("🎹"));
}

void PropertyListBinaryReadingTest::scalarsAreRead()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QVariant, expected);
    const auto value = object(bytes);
    QVERIFY(value);
    QCOMPARE(*value, expected);
    QCOMPARE(value->userType(), expected.userType());
    QVERIFY(expected.userType() != QMetaType::QString || !value->toString().isNull());
}

void PropertyListBinaryReadingTest::aNumberThatIsNoneAndADateThatIsNone()
{
    QVERIFY(std::isnan(object(hex("237FF8000000000000"))->toDouble()));
    QVERIFY(!object(hex("337FF8000000000000")));
    QVERIFY(!object(hex("337FF0000000000000")));
    QVERIFY(!object(hex("337FEFFFFFFFFFFFFF")));
}

void PropertyListBinaryReadingTest::countsFrom15OnStandInAnInteger()
{
    const QByteArray letters(300, 'a');
    QCOMPARE(object(BinaryPropertyList::text(letters.left(14)))->toString().size(), 14);
    QCOMPARE(object(BinaryPropertyList::text(letters.left(15)))->toString().size(), 15);
    QCOMPARE(object(hex("5F11012C") + letters), QVariant(QString::fromLatin1(letters)));
    QCOMPARE(object(hex("4F13000000000000012C") + letters), QVariant(letters));
    QCOMPARE(object(hex("5F1003616263")), QVariant(QStringLiteral("abc")));
}

void PropertyListBinaryReadingTest::containersAreRead()
{
    BinaryPropertyList list;
    list.objects = {list.dictionary({1, 2, 3, 4}),
                    BinaryPropertyList::text("a"),
                    BinaryPropertyList::text("b"),
                    list.container({5, 6, 7}),
                    hex("1007"),
                    hex("09"),
                    list.container({}),
                    list.dictionary({})};
    const QVariantMap expected{
        {QStringLiteral("a"), QVariantList{true, QVariantList(), QVariantMap()}},
        {QStringLiteral("b"), qlonglong(7)},
    };
    QCOMPARE(propertyListFromData(list.data()), QVariant(expected));
    list.root = 3;
    QCOMPARE(propertyListFromData(list.data()), expected[QStringLiteral("a")]);
}

void PropertyListBinaryReadingTest::sharedObjectsAreReadOnce()
{
    BinaryPropertyList list;
    list.objects = {list.container({1, 1, 1}), list.container({2, 2}),
                    BinaryPropertyList::text("shared")};
    const QVariantList inner{QStringLiteral("shared"), QStringLiteral("shared")};
    const QVariantList expected{QVariant(inner), QVariant(inner), QVariant(inner)};
    QCOMPARE(propertyListFromData(list.data()), QVariant(expected));
}

void PropertyListBinaryReadingTest::anyWidthOfOffsetsAndReferencesIsRead()
{
    for (auto width = 1; width <= 8; ++width) {
        BinaryPropertyList list;
        list.offsetSize = width;
        list.referenceSize = width;
        list.objects = {list.container({1, 2}), hex("08"), hex("09")};
        QCOMPARE(propertyListFromData(list.data()), QVariant(QVariantList{false, true}));
    }
}

void PropertyListBinaryReadingTest::aUidIsADictionary()
{
    BinaryPropertyList list;
    list.objects = {list.container({1, 2}), hex("8007"), hex("83FFFFFFFF")};
    const auto key = QStringLiteral("CF$UID");
    const QVariantList expected{QVariantMap{{key, qlonglong(7)}},
                                QVariantMap{{key, qlonglong(4294967295)}}};
    QCOMPARE(propertyListFromData(list.data()), QVariant(expected));
}

void PropertyListBinaryReadingTest::malformedObjectsAreNoPropertyList_data()
{
    QTest::addColumn<QByteArray>("data");
    const auto row = [](const char *name, const QList<QByteArray> &objects) {
        BinaryPropertyList list;
        list.objects = objects;
        QTest::newRow(name) << list.data();
    };
    const BinaryPropertyList list;
    for (const auto *kind : {"00", "01", "07", "0F", "15", "1F", "20", "21", "24", "2F", "30", "32",
                             "34", "70", "90", "B0", "C0", "E0", "F0"}) {
        row(kind, {hex(kind) + QByteArray(40, '\0')});
    }
    row("text beyond the end", {hex("5F1240000000616263")});
    row("UTF-16 text beyond the end", {hex("6F137FFFFFFFFFFFFFFF61")});
    row("data of the largest count", {hex("4F13FFFFFFFFFFFFFFFF61")});
    row("array of the largest count", {hex("AF13FFFFFFFFFFFFFFFF00")});
    row("dictionary of the largest count", {hex("DF138000000000000000")});
    row("count that is no integer", {hex("5F5161")});
    row("count of 16 bytes", {hex("5F1400000000000000000000000000000001") + "a"});
    row("array in itself", {list.container({0})});
    row("dictionary in itself", {list.dictionary({1, 0}), BinaryPropertyList::text("a")});
    row("arrays in each other", {list.container({1}), list.container({0})});
    row("reference to no object", {list.container({1})});
    row("number as key", {list.dictionary({1, 1}), hex("1001")});
    row("array as key", {list.dictionary({1, 2}), list.container({}), hex("09")});
    row("UTF-16 key with a zero", {list.dictionary({1, 1}), hex("6300610000 0062")});
    row("text with a zero", {hex("53410042")});
    row("key with a zero", {list.dictionary({1, 1}), hex("53410042")});
    row("UTF-16 text with a zero", {hex("6300610000 0062")});
    row("first half of a surrogate pair at the end", {hex("6220ACD83C")});
    row("first half of a surrogate pair in the middle", {hex("62D83C20AC")});
    row("first half of a surrogate pair twice", {hex("63D83CD83CDFB9")});
    row("second half of a surrogate pair", {hex("62DFB920AC")});
    row("key with half of a surrogate pair", {list.dictionary({1, 1}), hex("62DFB920AC")});
    row("dictionary with half of its references", {hex("D100"), hex("5161")});
}

void PropertyListBinaryReadingTest::malformedObjectsAreNoPropertyList()
{
    QFETCH(QByteArray, data);
    QVERIFY(!propertyListFromData(data));
}

void PropertyListBinaryReadingTest::unsoundTrailersAreNoPropertyList()
{
    BinaryPropertyList list;
    list.objects = {list.container({1, 2}), hex("08"), hex("09")};
    const auto sound = list.data();
    const auto trailer = sound.size() - 32;
    QVERIFY(propertyListFromData(sound));
    const auto refuses = [&](int at, const QByteArray &bytes) {
        auto data = sound;
        data.replace(trailer + at, bytes.size(), bytes);
        return !propertyListFromData(data);
    };
    QVERIFY(refuses(6, hex("00")));                // size of an offset
    QVERIFY(refuses(6, hex("09")));                //
    QVERIFY(refuses(6, hex("FF")));                //
    QVERIFY(refuses(7, hex("00")));                // size of a reference
    QVERIFY(refuses(7, hex("09")));                //
    QVERIFY(refuses(8, hex("0000000000000000")));  // number of objects
    QVERIFY(refuses(8, hex("0000000000000004")));  //
    QVERIFY(refuses(8, hex("4000000000000000")));  //
    QVERIFY(refuses(8, hex("FFFFFFFFFFFFFFFF")));  //
    QVERIFY(refuses(16, hex("0000000000000003"))); // the root
    QVERIFY(refuses(16, hex("FFFFFFFFFFFFFFFF"))); //
    QVERIFY(refuses(24, hex("FFFFFFFFFFFFFFFF"))); // the table
    QVERIFY(refuses(24, hex("000000000000FFFF"))); //
    QVERIFY(refuses(24, hex("0000000000000000"))); // whose offsets are the header's letters
    QVERIFY(!propertyListFromData(QByteArray("bplist00").append(32, '\0')));
    QVERIFY(!propertyListFromData(QByteArray("bplist00").append(32, '\xFF')));
    QVERIFY(!propertyListFromData(QByteArray("bplist15").append(sound.mid(8))));
}

void PropertyListBinaryReadingTest::dataCutShortAnywhereAreNoPropertyList()
{
    BinaryPropertyList list;
    list.objects = {list.dictionary({1, 2}), BinaryPropertyList::text("a"), list.container({3, 4}),
                    hex("23BFE0000000000000"), hex("6320ACD83CDFB9")};
    const auto whole = list.data();
    QVERIFY(propertyListFromData(whole));
    for (int size = 0; size < whole.size(); ++size) {
        QVERIFY(!propertyListFromData(whole.left(size)));
        QVERIFY(!propertyListFromData("bplist00" + whole.right(size).mid(8)) ||
                size == whole.size());
    }
}

TEST_CLASS(PropertyListBinaryReadingTest, QCoreApplication)
#include "PropertyListBinaryReadingTest.moc"
