// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyListLimits.h"

#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Platform/Core/PropertyLists/BinaryPropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <pthread.h>

using platform::propertyListFromData;
using platform::propertyListToXml;
using platform::propertylist::maximumDepth;

namespace {

QByteArray nestedXml(int depth)
{
    return QByteArray("<array>").repeated(depth) + QByteArray("</array>").repeated(depth);
}

QByteArray nestedDictionaries(int depth)
{
    return QByteArray("<dict><key>a</key>").repeated(depth) + "<true/>" +
           QByteArray("</dict>").repeated(depth);
}

QByteArray nestedBinary(int depth)
{
    BinaryPropertyList list;
    list.referenceSize = 4;
    for (auto i = 1; i < depth; ++i) {
        list.objects << list.container({i});
    }
    list.objects << list.container({});
    return list.data();
}

QVariant nestedValue(int depth)
{
    QVariant value = QVariantList();
    for (auto i = 1; i < depth; ++i) {
        value = QVariantList{value};
    }
    return value;
}

} // namespace

class PropertyListLimitsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void nestingIsReadToTheLimitAndNoFurther();
    void nestingIsWrittenToTheLimitAndNoFurther();
    void aMillionNestedContainersDoNotOverflowTheStack();
    void aSharedObjectDoesNotGetAroundTheLimitOfDepth();
    void objectsThatUnfoldWithoutBoundAreRefused();
    void aHugeArrayOfOneObjectIsRefused();
    void aLongTextMetOftenIsRefused();
    void moreElementsThanTheLimitAreRefused();
    void nestingCannotHideBehindOtherMarkup_data();
    void nestingCannotHideBehindOtherMarkup();
    void whatWouldBeTooLargeIsNotWritten();
    void moreBytesThanTheLimitAreNotRead();
    void theDeepestListIsReadAndWrittenOnASmallStack();
};

void PropertyListLimitsTest::nestingIsReadToTheLimitAndNoFurther()
{
    QCOMPARE(propertyListFromData(nestedXml(maximumDepth)), nestedValue(maximumDepth));
    QVERIFY(!propertyListFromData(nestedXml(maximumDepth + 1)));
    QVERIFY(propertyListFromData(nestedDictionaries(maximumDepth)));
    QVERIFY(!propertyListFromData(nestedDictionaries(maximumDepth + 1)));
    QCOMPARE(propertyListFromData(nestedBinary(maximumDepth)), nestedValue(maximumDepth));
    QVERIFY(!propertyListFromData(nestedBinary(maximumDepth + 1)));
}

void PropertyListLimitsTest::nestingIsWrittenToTheLimitAndNoFurther()
{
    const auto xml = propertyListToXml(nestedValue(maximumDepth));
    QCOMPARE(propertyListFromData(xml), nestedValue(maximumDepth));
    QVERIFY(propertyListToXml(nestedValue(maximumDepth + 1)).isEmpty());
}

void PropertyListLimitsTest::aMillionNestedContainersDoNotOverflowTheStack()
{
    constexpr auto million = 1000000;
    QVERIFY(!propertyListFromData(nestedXml(million)));
    QVERIFY(!propertyListFromData(nestedDictionaries(million)));
    QVERIFY(!propertyListFromData(nestedBinary(million)));
    QVERIFY(!propertyListFromData(QByteArray("<array>").repeated(million)));
}

void PropertyListLimitsTest::aSharedObjectDoesNotGetAroundTheLimitOfDepth()
{
    // Objects 1 to half are a chain, met first at its top and then again half way down another.
    BinaryPropertyList list;
    list.referenceSize = 4;
    const auto half = maximumDepth / 2;
    const auto chain = [&](int length, int next) {
        for (auto i = 1; i < length; ++i) {
            list.objects << list.container({static_cast<int>(list.objects.size()) + 1});
        }
        list.objects << (next == 0 ? list.container({}) : list.container({next}));
    };
    for (const auto extra : {0, 1}) {
        list.objects = {list.container({1, half + 1})};
        chain(half, 0);
        chain(half - 1 + extra, 1);
        QCOMPARE(bool(propertyListFromData(list.data())), extra == 0);
    }
}

void PropertyListLimitsTest::objectsThatUnfoldWithoutBoundAreRefused()
{
    // Each array holds the next one twice: 200 small objects stand for 2 to the 200th values.
    BinaryPropertyList list;
    for (auto i = 0; i < 200; ++i) {
        list.objects << list.container({i + 1, i + 1});
    }
    list.objects << BinaryPropertyList::text("bomb");
    QVERIFY(!propertyListFromData(list.data()));
}

void PropertyListLimitsTest::aHugeArrayOfOneObjectIsRefused()
{
    BinaryPropertyList list;
    const auto count = static_cast<int>(platform::propertylist::maximumValues) + 1;
    list.objects = {BinaryPropertyList::counted(0xA, count, QByteArray(count, '\1')),
                    QByteArray("\x09")};
    QVERIFY(!propertyListFromData(list.data()));
}

void PropertyListLimitsTest::aLongTextMetOftenIsRefused()
{
    BinaryPropertyList list;
    const auto text = BinaryPropertyList::text(QByteArray(1024 * 1024, 'a'));
    list.objects = {list.container(QList<int>::fromVector(QVector<int>(63, 1))), text};
    QVERIFY(propertyListFromData(list.data()));
    list.objects = {list.container(QList<int>::fromVector(QVector<int>(64, 1))), text};
    QVERIFY(!propertyListFromData(list.data()));
    // The same where the texts of different objects overlap.
    list.objects = {list.container({})};
    for (auto i = 0; i < 70; ++i) {
        list.objects << QByteArray::fromHex("5F1200100000");
    }
    list.objects << QByteArray(1024 * 1024 + 10, 'a');
    QList<int> all;
    for (auto i = 1; i <= 70; ++i) {
        all << i;
    }
    list.objects[0] = list.container(all);
    QVERIFY(!propertyListFromData(list.data()));
    list.root = 70;
    QVERIFY(propertyListFromData(list.data()));
}

void PropertyListLimitsTest::moreElementsThanTheLimitAreRefused()
{
    const auto list = [](qint64 count) {
        return "<array>" + QByteArray("<true/>").repeated(static_cast<int>(count)) + "</array>";
    };
    QVERIFY(propertyListFromData(list(platform::propertylist::maximumValues - 1)));
    QVERIFY(!propertyListFromData(list(4 * platform::propertylist::maximumValues)));
}

// What looks like closing tags to one reader and not to another must not take nesting back.
void PropertyListLimitsTest::nestingCannotHideBehindOtherMarkup_data()
{
    QTest::addColumn<QByteArray>("unit");
    QTest::newRow("comment") << QByteArray("<array><!-- </array> -->");
    QTest::newRow("section") << QByteArray("<array><![CDATA[</array>]]>");
    QTest::newRow("text") << QByteArray("<array><string><![CDATA[</array>]]></string>");
    QTest::newRow("instruction") << QByteArray("<array><?a \"?></array>\"?>");
    QTest::newRow("attribute") << QByteArray("<array a=\"></array>\">");
    QTest::newRow("document type") << QByteArray("<array><!DOCTYPE a [</array>]>");
}

void PropertyListLimitsTest::nestingCannotHideBehindOtherMarkup()
{
    QFETCH(QByteArray, unit);
    constexpr auto many = 300000;
    QVERIFY(!propertyListFromData(unit.repeated(many)));
    QVERIFY(!propertyListFromData(unit.repeated(many) + QByteArray("</array>").repeated(many)));
}

void PropertyListLimitsTest::whatWouldBeTooLargeIsNotWritten()
{
    const QString megabyte(1024 * 1024, QLatin1Char('a'));
    QVariantList list;
    for (auto i = 0; i < 63; ++i) {
        list << megabyte;
    }
    QVERIFY(!propertyListToXml(list).isEmpty());
    list << megabyte;
    QVERIFY(propertyListToXml(list).isEmpty());
    QVERIFY(propertyListToXml(list.constFirst().toString().repeated(64)).isEmpty());
}

void PropertyListLimitsTest::moreBytesThanTheLimitAreNotRead()
{
    const QByteArray xml("<true/>");
    const auto space = static_cast<int>(platform::propertylist::maximumSize) - xml.size();
    QVERIFY(propertyListFromData(QByteArray(space, ' ') + xml));
    QVERIFY(!propertyListFromData(QByteArray(space + 1, ' ') + xml));
}

void PropertyListLimitsTest::theDeepestListIsReadAndWrittenOnASmallStack()
{
    // Many programs give their threads little. The size has to be set before the thread starts.
    pthread_attr_t attributes;
    QCOMPARE(::pthread_attr_init(&attributes), 0);
    QCOMPARE(::pthread_attr_setstacksize(&attributes, std::size_t(1024) * 1024), 0);
    auto body = +[](void *result) -> void * {
        const auto fromXml = propertyListFromData(nestedDictionaries(maximumDepth));
        const auto fromBinary = propertyListFromData(nestedBinary(maximumDepth));
        *static_cast<bool *>(result) = fromXml && fromBinary &&
                                       !propertyListToXml(*fromXml).isEmpty() &&
                                       !propertyListToXml(*fromBinary).isEmpty();
        return nullptr;
    };
    pthread_t thread{};
    bool done = false;
    QCOMPARE(::pthread_create(&thread, &attributes, body, &done), 0);
    QCOMPARE(::pthread_join(thread, nullptr), 0);
    QCOMPARE(::pthread_attr_destroy(&attributes), 0);
    QVERIFY(done);
}

TEST_CLASS(PropertyListLimitsTest, QCoreApplication)
#include "PropertyListLimitsTest.moc"
