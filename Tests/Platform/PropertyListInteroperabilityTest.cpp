// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PropertyList.h"

#include <QDateTime>
#include <QTest>

#include <plist/plist.h>

#include <cstdlib>
#include <limits>
#include <memory>

using platform::propertyListFromData;
using platform::propertyListToXml;

namespace {

struct Free {
    void operator()(void *node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, Free>;

Node nodeFromXml(const QByteArray &xml)
{
    plist_t node = nullptr;
    plist_from_xml(xml.constData(), static_cast<uint32_t>(xml.size()), &node);
    return Node(node);
}

template <typename Writer>
QByteArray written(const Node &node, Writer writer)
{
    char *bytes = nullptr;
    uint32_t size = 0;
    writer(node.get(), &bytes, &size);
    QByteArray copy(bytes, static_cast<int>(size));
    std::free(bytes);
    return copy;
}

} // namespace

// The listener and other programs may use another reader and writer of property lists, libplist.
class PropertyListInteroperabilityTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void whatWeWriteTheLibraryReadsAlike_data();
    void whatWeWriteTheLibraryReadsAlike();
    void whatTheLibraryWritesWeReadAlike_data() { whatWeWriteTheLibraryReadsAlike_data(); }
    void whatTheLibraryWritesWeReadAlike();
    void aLargeListIsReadAlikeInEitherForm();
};

void PropertyListInteroperabilityTest::whatWeWriteTheLibraryReadsAlike_data()
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
    row("line ends", QStringLiteral("a\r\nb\rc"));
    row("letters of every length", QString::fromUtf8("aé€🎹"));
    row("long text", QString(1000, QLatin1Char('a')));
    row("data", QByteArray("\0\xFF\0<>", 5));
    row("much data", QByteArray(1000, 'x'));
    row("date", QDateTime({2026, 1, 31}, {23, 59, 59}, Qt::UTC));
    row("early date", QDateTime({1971, 2, 3}, {4, 5, 6}, Qt::UTC));
    row("empty array", QVariantList());
    row("empty dictionary", QVariantMap());
    row("dictionary", QVariantMap{{QStringLiteral("<é>"), QVariantList{true, qlonglong(1)}},
                                  {QStringLiteral("b"), QVariantMap()}});
    row("UID", QVariantMap{{QStringLiteral("CF$UID"), qlonglong(7)}});
}

void PropertyListInteroperabilityTest::whatWeWriteTheLibraryReadsAlike()
{
    QFETCH(QVariant, value);
    // The library roots only containers in the binary form.
    const QVariantList list{value};
    const auto node = nodeFromXml(propertyListToXml(list));
    QVERIFY(node);
    QCOMPARE(propertyListFromData(written(node, plist_to_bin)), QVariant(list));
}

void PropertyListInteroperabilityTest::whatTheLibraryWritesWeReadAlike()
{
    QFETCH(QVariant, value);
    const QVariantList list{value};
    const auto node = nodeFromXml(propertyListToXml(list));
    QVERIFY(node);
    const auto read = propertyListFromData(written(node, plist_to_xml));
    QCOMPARE(read, QVariant(list));
    QCOMPARE(read->toList().constFirst().userType(), value.userType());
}

void PropertyListInteroperabilityTest::aLargeListIsReadAlikeInEitherForm()
{
    QVariantList list;
    for (auto i = 0; i < 1000; ++i) {
        const auto text = QStringLiteral("entry %1").arg(i);
        list << QVariantMap{{QStringLiteral("key"), text}, {text, qlonglong(i) * i}};
    }
    const auto node = nodeFromXml(propertyListToXml(list));
    QVERIFY(node);
    QCOMPARE(propertyListFromData(written(node, plist_to_xml)), QVariant(list));
    QCOMPARE(propertyListFromData(written(node, plist_to_bin)), QVariant(list));
}

QTEST_GUILESS_MAIN(PropertyListInteroperabilityTest)
#include "PropertyListInteroperabilityTest.moc"
