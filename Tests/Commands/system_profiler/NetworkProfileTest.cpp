// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/system_profiler/NetworkProfile.h"

#include "Commands/system_profiler/NetworkLinks.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <net/if_arp.h>

namespace {

const std::string current("\x02\x00\x5e\x00\x53\x01", 6);
const std::string permanent("\x0a\x1b\x2c\x3d\x4e\xff", 6);
const std::string zeros(6, '\0');

NetworkLink card()
{
    NetworkLink link;
    link.name = "eth0";
    link.address = current;
    link.permanentAddress = permanent;
    link.type = ARPHRD_ETHER;
    link.hasDevice = true;
    link.index = 2;
    return link;
}

// One that is made of others, with a made-up address.
NetworkLink stacked(const char *name, const char *kind, int index)
{
    auto link = card();
    link.name = name;
    link.permanentAddress.clear();
    link.hasDevice = false;
    link.kind = kind;
    link.index = index;
    return link;
}

std::vector<std::string> offeredOf(const std::vector<NetworkLink> &links)
{
    std::vector<std::string> names;
    for (const auto &link : offeredLinks(links)) {
        names.push_back(link.name);
    }
    return names;
}

using Names = std::vector<std::string>;

// As any reader of the profile sees it.
QVariantList itemsIn(const std::string &profile)
{
    const auto list = platform::propertyListFromData(QByteArray::fromStdString(profile));
    const auto document = list.value_or(QVariant()).toList().value(0).toMap();
    return document.value(QStringLiteral("_dataType")) == QStringLiteral("SPNetworkDataType")
               ? document.value(QStringLiteral("_items")).toList()
               : QVariantList{QStringLiteral("no profile")};
}

} // namespace

class NetworkProfileTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void onlyAnInterfaceWithAnAddressOfItsOwnIsOffered_data();
    void onlyAnInterfaceWithAnAddressOfItsOwnIsOffered();
    void aGroupIsOfferedInPlaceOfItsPorts();
    void ofACardAndItsVlanTheOneWithAnAddressIsOffered();
    void interfacesAreStackedInAnyDepth();
    void thePermanentAddressIsShownRatherThanARandomisedOne();
    void theProfileHoldsTheServicesInTheirOrder();
    void anEmptyProfileHasNoItems();
    void theProfileIsAsciiWhateverTheNames_data();
    void theProfileIsAsciiWhateverTheNames();
};

void NetworkProfileTest::onlyAnInterfaceWithAnAddressOfItsOwnIsOffered_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<QByteArray>("permanentAddress");
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("hasDevice");
    QTest::addColumn<bool>("isRandom");
    QTest::addColumn<bool>("offered");
    const auto now = QByteArray::fromStdString(current);
    const auto own = QByteArray::fromStdString(permanent);
    const auto none = QByteArray::fromStdString(zeros);
    const QByteArray unknown;
    const QByteArray longer(20, 'a');
    constexpr int ethernet = ARPHRD_ETHER;
    QTest::newRow("a card") << now << own << ethernet << true << false << true;
    QTest::newRow("a card whose own address is not known")
        << now << unknown << ethernet << true << false << true;
    QTest::newRow("a card with zeros for its own")
        << now << none << ethernet << true << false << true;
    QTest::newRow("a card with a randomised address")
        << now << own << ethernet << true << true << true;
    QTest::newRow("a card that has no address but a made-up one")
        << now << unknown << ethernet << true << true << false;
    QTest::newRow("a card without any address")
        << none << none << ethernet << true << false << false;
    QTest::newRow("a bridge") << now << unknown << ethernet << false << false << false;
    QTest::newRow("one that borrowed its address")
        << now << own << ethernet << false << false << false;
    QTest::newRow("a pair between containers")
        << now << unknown << ethernet << false << true << false;
    QTest::newRow("the loopback") << none << unknown << int{ARPHRD_LOOPBACK} << false << false
                                  << false;
    QTest::newRow("a tunnel") << unknown << unknown << int{ARPHRD_NONE} << false << false << false;
    QTest::newRow("a modem") << unknown << unknown << int{ARPHRD_PPP} << true << false << false;
    QTest::newRow("InfiniBand") << longer << longer << int{ARPHRD_INFINIBAND} << true << false
                                << false;
    QTest::newRow("a wireless monitor")
        << now << own << int{ARPHRD_IEEE80211_RADIOTAP} << true << false << false;
    QTest::newRow("an address of another length")
        << longer << unknown << ethernet << true << false << false;
}

void NetworkProfileTest::onlyAnInterfaceWithAnAddressOfItsOwnIsOffered()
{
    QFETCH(QByteArray, address);
    QFETCH(QByteArray, permanentAddress);
    QFETCH(int, type);
    QFETCH(bool, hasDevice);
    QFETCH(bool, isRandom);
    auto link = card();
    link.address = address.toStdString();
    link.permanentAddress = permanentAddress.toStdString();
    link.type = static_cast<unsigned>(type);
    link.hasDevice = hasDevice;
    link.isRandom = isRandom;
    QTEST(!offeredLinks({link}).empty(), "offered");
}

void NetworkProfileTest::aGroupIsOfferedInPlaceOfItsPorts()
{
    for (const auto *kind : {"bridge", "bond", "team"}) {
        auto group = stacked("group0", kind, 3);
        auto port = card();
        port.master = group.index;
        auto machine = stacked("vnet0", "tun", 4);
        machine.master = group.index;
        QVERIFY(offeredOf({port, group, machine}) == Names{"group0"}); // with a cable or without
        group.carriesAddress = true;
        QVERIFY(offeredOf({port, group, machine}) == Names{"group0"});
        // One of containers alone stands on no card.
        QVERIFY(offeredOf({card(), group, machine}) == Names{"eth0"});
    }
    // Such a master only sorts packets: the port keeps its address.
    auto sorter = stacked("vrf0", "vrf", 3);
    auto port = card();
    port.master = sorter.index;
    QVERIFY(offeredOf({port, sorter}) == Names{"eth0"});
}

void NetworkProfileTest::ofACardAndItsVlanTheOneWithAnAddressIsOffered()
{
    auto below = card();
    auto vlan = stacked("eth0.10", "vlan", 3);
    vlan.lower = below.index;
    QVERIFY(offeredOf({below, vlan}) == Names{"eth0"}); // no cable
    vlan.carriesAddress = true;
    QVERIFY(offeredOf({below, vlan}) == Names{"eth0.10"});
    below.carriesAddress = true;
    QVERIFY(offeredOf({below, vlan}) == (Names{"eth0", "eth0.10"}));
    vlan.carriesAddress = false;
    QVERIFY(offeredOf({below, vlan}) == Names{"eth0"});
    vlan.carriesAddress = true;
    below.hasDevice = false; // of no card
    QVERIFY(offeredOf({below, vlan}).empty());
}

void NetworkProfileTest::interfacesAreStackedInAnyDepth()
{
    // A bond of a card, its VLAN the port of a bridge, and that carries the address.
    auto port = card();
    auto bond = stacked("bond0", "bond", 3);
    auto vlan = stacked("bond0.10", "vlan", 4);
    auto bridge = stacked("br0", "bridge", 5);
    port.master = bond.index;
    vlan.lower = bond.index;
    vlan.master = bridge.index;
    bridge.carriesAddress = true;
    QVERIFY(offeredOf({port, bond, vlan, bridge}) == Names{"br0"});
    // What the kernel never tells harms nobody.
    bond.master = bridge.index;
    bridge.master = bond.index;
    QVERIFY(offeredOf({bond, bridge}).empty());
}

void NetworkProfileTest::thePermanentAddressIsShownRatherThanARandomisedOne()
{
    auto link = card();
    QCOMPARE(hardwareAddress(link), std::string("0a:1b:2c:3d:4e:ff"));
    link.permanentAddress = zeros;
    QCOMPARE(hardwareAddress(link), std::string("02:00:5e:00:53:01"));
    link.permanentAddress.clear();
    QCOMPARE(hardwareAddress(link), std::string("02:00:5e:00:53:01"));
}

void NetworkProfileTest::theProfileHoldsTheServicesInTheirOrder()
{
    const auto items =
        itemsIn(networkProfile({{"Home", "wlan0", "0a:1b:2c:3d:4e:60"},
                                {"Wired connection 1", "eth0", "0a:1b:2c:3d:4e:5f"}}));
    const auto ethernet = [](const char *address) {
        return QVariantMap{{QStringLiteral("MAC Address"), QString::fromLatin1(address)}};
    };
    const QVariantList expected{
        QVariantMap{{QStringLiteral("_name"), QStringLiteral("Home")},
                    {QStringLiteral("interface"), QStringLiteral("wlan0")},
                    {QStringLiteral("Ethernet"), ethernet("0a:1b:2c:3d:4e:60")}},
        QVariantMap{{QStringLiteral("_name"), QStringLiteral("Wired connection 1")},
                    {QStringLiteral("interface"), QStringLiteral("eth0")},
                    {QStringLiteral("Ethernet"), ethernet("0a:1b:2c:3d:4e:5f")}}};
    QCOMPARE(items, expected);
}

void NetworkProfileTest::anEmptyProfileHasNoItems()
{
    QCOMPARE(itemsIn(networkProfile({})), QVariantList());
}

void NetworkProfileTest::theProfileIsAsciiWhateverTheNames_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("shown");
    const auto unknown = QString(QChar(QChar::ReplacementCharacter));
    QTest::newRow("markup") << QByteArray("a<b>&amp;]]>\"'") << QStringLiteral("a<b>&amp;]]>\"'");
    QTest::newRow("another script") << QByteArray("Büro 网络 \xF0\x9F\x98\x80")
                                    << QString::fromUtf8("Büro 网络 \xF0\x9F\x98\x80");
    QTest::newRow("no UTF-8") << QByteArray("a\xFF"
                                            "b\xC3")
                              << (u'a' + unknown + u'b' + unknown);
    QTest::newRow("too long a form") << QByteArray("\xC0\x80") << unknown.repeated(2);
    QTest::newRow("half of a pair") << QByteArray("\xED\xA0\x80") << unknown.repeated(3);
    QTest::newRow("beyond all characters") << QByteArray("\xF4\x90\x80\x80") << unknown.repeated(4);
    QTest::newRow("control characters") << QByteArray("a\x01\x1b[1m\x7f")
                                        << (u'a' + unknown.repeated(2) + QStringLiteral("[1m\x7f"));
    QTest::newRow("white space") << QByteArray("a\t\r\nb") << QStringLiteral("a\t\r\nb");
    QTest::newRow("no characters") << QByteArray("\xEF\xBF\xBE\xEF\xBF\xBF") << unknown.repeated(2);
}

void NetworkProfileTest::theProfileIsAsciiWhateverTheNames()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, shown);
    const auto profile = networkProfile({{name.toStdString(), name.toStdString(), "02:00"}});
    for (const char byte : profile) {
        QVERIFY(static_cast<unsigned char>(byte) < 0x80);
    }
    const auto item = itemsIn(profile).value(0).toMap();
    QCOMPARE(item.value(QStringLiteral("_name")).toString(), shown);
    QCOMPARE(item.value(QStringLiteral("interface")).toString(), shown);
}

TEST_CLASS(NetworkProfileTest, QCoreApplication)
#include "NetworkProfileTest.moc"
