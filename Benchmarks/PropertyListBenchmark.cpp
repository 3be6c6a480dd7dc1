// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What reading and writing a property list of 500 entries costs, conversion to and from QVariant
// included, beside libplist with its own nodes.
#include "Platform/PropertyList.h"

#include <plist/plist.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int entries = 500;
constexpr int rounds = 501;

using Clock = std::chrono::steady_clock;

// Entries as in a keyboard-layout preset, with something of each kind.
QVariantList makeList()
{
    QVariantList list;
    for (int i = 0; i < entries; ++i) {
        list << QVariantMap{
            {QStringLiteral("key"), QStringLiteral("remote.key.%1").arg(i)},
            {QStringLiteral("val"), QString::fromUtf8("⌘%1 <shift> & more").arg(i)},
            {QStringLiteral("keycode"), qlonglong(i)},
            {QStringLiteral("modifiers"), qlonglong(1048576)},
            {QStringLiteral("repeat"), i % 2 == 0},
            {QStringLiteral("speed"), 0.5},
        };
    }
    return list;
}

plist_t nodeFromXml(const QByteArray &xml)
{
    plist_t node = nullptr;
    plist_from_xml(xml.constData(), static_cast<uint32_t>(xml.size()), &node);
    return node;
}

plist_t nodeFromBinary(const QByteArray &binary)
{
    plist_t node = nullptr;
    plist_from_bin(binary.constData(), static_cast<uint32_t>(binary.size()), &node);
    return node;
}

void require(bool good)
{
    if (!good) {
        std::fputs("The lists differ.\n", stderr);
        std::exit(1);
    }
}

template <typename Call>
double microseconds(const Call &call)
{
    const auto start = Clock::now();
    call();
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

double median(std::vector<double> &times)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

// Turn by turn, so that both meet the same machine.
template <typename Ours, typename Peers>
void compare(const char *what, const Ours &ours, const Peers &peers)
{
    std::vector<double> ourTimes;
    std::vector<double> peerTimes;
    for (int round = 0; round < rounds; ++round) {
        ourTimes.push_back(microseconds(ours));
        peerTimes.push_back(microseconds(peers));
    }
    const auto our = median(ourTimes);
    const auto peer = median(peerTimes);
    std::printf("%-24s ours %8.1f us   libplist %8.1f us   ratio %.2f\n", what, our, peer,
                our / peer);
}

} // namespace

int main()
{
    const auto list = makeList();
    const auto xml = platform::propertyListToXml(list);
    auto *const node = nodeFromXml(xml);
    char *bytes = nullptr;
    uint32_t size = 0;
    plist_to_bin(node, &bytes, &size);
    const QByteArray binary(bytes, static_cast<int>(size));
    std::free(bytes);
    require(platform::propertyListFromData(xml) == QVariant(list));
    require(platform::propertyListFromData(binary) == QVariant(list));

    const auto readXml = [&] { platform::propertyListFromData(xml); };
    const auto writeXml = [&] { platform::propertyListToXml(list); };
    const auto peersReadXml = [&] { plist_free(nodeFromXml(xml)); };
    const auto peersWriteXml = [&] {
        char *text = nullptr;
        uint32_t length = 0;
        plist_to_xml(node, &text, &length);
        std::free(text);
    };
    std::printf("A list of %d entries, %d bytes; medians of %d rounds.\n", entries,
                static_cast<int>(xml.size()), rounds);
    compare("read XML", readXml, peersReadXml);
    compare("write XML", writeXml, peersWriteXml);
    compare(
        "read and write XML", [&] { readXml(), writeXml(); },
        [&] { peersReadXml(), peersWriteXml(); });
    compare(
        "read binary", [&] { platform::propertyListFromData(binary); },
        [&] { plist_free(nodeFromBinary(binary)); });
    plist_free(node);
}
