// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/system_profiler/NetworkProfile.h"

#include "Commands/system_profiler/NetworkLinks.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QRandomGenerator>
#include <QTest>

#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>

#include <cerrno>

namespace {

const std::string current("\x02\x00\x5e\x00\x53\x01", 6);
const std::string permanent("\x0a\x1b\x2c\x3d\x4e\xff", 6);
const std::string zeros(6, '\0');

template <typename Type>
std::string bytesOf(const Type &value)
{
    return {reinterpret_cast<const char *>(&value), sizeof value};
}

std::string padded(std::string bytes)
{
    bytes.resize((bytes.size() + 3) / 4 * 4);
    return bytes;
}

std::string attribute(unsigned short type, const std::string &value)
{
    rtattr header{};
    header.rta_type = type;
    header.rta_len = static_cast<unsigned short>(sizeof header + value.size());
    return padded(bytesOf(header) + value);
}

std::string message(unsigned short type, const std::string &body, unsigned short flags = 0)
{
    nlmsghdr header{};
    header.nlmsg_type = type;
    header.nlmsg_flags = flags;
    header.nlmsg_len = static_cast<unsigned>(sizeof header + body.size());
    return padded(bytesOf(header) + body);
}

std::string linkMessage(const std::string &name, const std::string &attributes,
                        unsigned short type = ARPHRD_ETHER, unsigned short flags = NLM_F_MULTI)
{
    ifinfomsg header{};
    header.ifi_type = type;
    const auto nameAttribute = attribute(IFLA_IFNAME, name + '\0');
    return message(RTM_NEWLINK, bytesOf(header) + nameAttribute + attributes, flags);
}

const std::string end = message(NLMSG_DONE, std::string(4, '\0'));

struct List {
    std::vector<NetworkLink> links;
    LinkListState state;
};

List listFrom(const std::string &bytes)
{
    List list;
    addLinksFromMessages(bytes.data(), bytes.size(), list.links, list.state);
    return list;
}

NetworkLink card()
{
    return {"eth0", current, permanent, ARPHRD_ETHER, true, false};
}

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
    void aLinkIsReadFromItsMessage();
    void aListGoesOnFromMessageToMessage();
    void aTornListSaysSo();
    void aRefusalOfTheKernelIsAnError();
    void brokenMessagesEndTheList_data();
    void brokenMessagesEndTheList();
    void randomBytesDoNoHarm();
    void onlyAnInterfaceWithAnAddressOfItsOwnIsOffered_data();
    void onlyAnInterfaceWithAnAddressOfItsOwnIsOffered();
    void thePermanentAddressIsShownRatherThanARandomisedOne();
    void theProfileHoldsTheServicesInTheirOrder();
    void anEmptyProfileHasNoItems();
    void theProfileIsAsciiWhateverTheNames_data();
    void theProfileIsAsciiWhateverTheNames();
};

void NetworkProfileTest::aLinkIsReadFromItsMessage()
{
    // The flag in the type says that the value is nested; the type is what is below it.
    const auto list = listFrom(
        linkMessage("wlan0", attribute(IFLA_ADDRESS, current) + attribute(1234, "unknown") +
                                 attribute(IFLA_PERM_ADDRESS, permanent) +
                                 attribute(IFLA_PARENT_DEV_NAME | NLA_F_NESTED, "0000:00:03.0")) +
        linkMessage("br0", attribute(IFLA_ADDRESS, current)) +
        linkMessage("tun0", {}, ARPHRD_NONE) + end);
    const std::vector<NetworkLink> expected{
        {"wlan0", current, permanent, ARPHRD_ETHER, true, false},
        {"br0", current, {}, ARPHRD_ETHER, false, false},
        {"tun0", {}, {}, ARPHRD_NONE, false, false}};
    QVERIFY(list.links == expected);
    QVERIFY(list.state.ended);
    QVERIFY(!list.state.torn);
    QCOMPARE(list.state.error, 0);
}

void NetworkProfileTest::aListGoesOnFromMessageToMessage()
{
    auto list = listFrom(linkMessage("eth0", {}) + message(RTM_NEWADDR, "other"));
    QVERIFY(!list.state.ended);
    const auto rest = linkMessage("eth1", {}) + end + linkMessage("behind the end", {});
    addLinksFromMessages(rest.data(), rest.size(), list.links, list.state);
    QVERIFY(list.state.ended);
    QCOMPARE(list.links.size(), std::size_t{2});
    QCOMPARE(list.links.back().name, std::string("eth1"));
}

void NetworkProfileTest::aTornListSaysSo()
{
    const auto torn =
        listFrom(linkMessage("eth0", {}, ARPHRD_ETHER, NLM_F_MULTI | NLM_F_DUMP_INTR) +
                 linkMessage("eth1", {}) + end);
    QVERIFY(torn.state.torn);
    QVERIFY(torn.state.ended);
    QCOMPARE(torn.state.error, 0);
    QCOMPARE(torn.links.size(), std::size_t{2});
}

void NetworkProfileTest::aRefusalOfTheKernelIsAnError()
{
    nlmsgerr refusal{};
    refusal.error = -EPERM;
    const auto list = listFrom(message(NLMSG_ERROR, bytesOf(refusal)));
    QVERIFY(list.state.ended);
    QCOMPARE(list.state.error, EPERM);
}

void NetworkProfileTest::brokenMessagesEndTheList_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const auto whole = linkMessage("eth0", attribute(IFLA_ADDRESS, current));
    for (std::size_t size = 1; size < whole.size(); ++size) {
        QTest::addRow("%zu bytes", size) << QByteArray(whole.data(), static_cast<int>(size));
    }
    QTest::newRow("a length of zero") << QByteArray(64, '\0');
    QTest::newRow("a length beyond the end") << QByteArray(64, '\x7f');
    QTest::newRow("a refusal without a reason")
        << QByteArray::fromStdString(message(NLMSG_ERROR, "x"));
}

void NetworkProfileTest::brokenMessagesEndTheList()
{
    QFETCH(QByteArray, bytes);
    const auto list = listFrom(bytes.toStdString());
    QVERIFY(list.links.empty());
    QVERIFY(list.state.ended);
    QCOMPARE(list.state.error, EBADMSG);
}

void NetworkProfileTest::randomBytesDoNoHarm()
{
    QRandomGenerator random(4);
    const auto whole = linkMessage("eth0", attribute(IFLA_ADDRESS, current)) +
                       linkMessage("wlan0", attribute(IFLA_PERM_ADDRESS, permanent)) + end;
    for (auto run = 0; run < 20000; ++run) {
        auto bytes = whole;
        for (auto change = random.bounded(1, 8); change > 0; --change) {
            bytes[random.bounded(static_cast<quint32>(bytes.size()))] =
                static_cast<char>(random.bounded(256));
        }
        for (const auto &link : listFrom(bytes).links) {
            QVERIFY(!link.name.empty());
            QVERIFY(
                itemsIn(networkProfile({{link.name, link.name, hardwareAddress(link)}})).size() ==
                1);
        }
    }
}

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
    const NetworkLink link{"x",
                           address.toStdString(),
                           permanentAddress.toStdString(),
                           static_cast<unsigned>(type),
                           hasDevice,
                           isRandom};
    QTEST(isOffered(link), "offered");
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
