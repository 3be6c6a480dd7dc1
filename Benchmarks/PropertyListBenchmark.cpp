// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What reading and writing a property list of 500 entries costs, conversion to and from QVariant
// included, beside libplist used directly: its nodes are made from and taken apart into the
// simplest values there are.
#include "Benchmarks/Timing.h"
#include "Platform/Core/PropertyLists/PropertyList.h"

#include <plist/plist.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

using timing::median;

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

// The entries of makeList() as nodes.
plist_t makeNodes()
{
    auto *const list = plist_new_array();
    for (int i = 0; i < entries; ++i) {
        const auto number = std::to_string(i);
        auto *const entry = plist_new_dict();
        plist_dict_set_item(entry, "key", plist_new_string(("remote.key." + number).c_str()));
        plist_dict_set_item(entry, "keycode", plist_new_uint(static_cast<uint64_t>(i)));
        plist_dict_set_item(entry, "modifiers", plist_new_uint(1048576));
        plist_dict_set_item(entry, "repeat", plist_new_bool(i % 2 == 0));
        plist_dict_set_item(entry, "speed", plist_new_real(0.5));
        plist_dict_set_item(entry, "val",
                            plist_new_string(("⌘" + number + " <shift> & more").c_str()));
        plist_array_append_item(list, entry);
    }
    return list;
}

QByteArray xmlFromNodes(plist_t nodes)
{
    char *text = nullptr;
    uint32_t length = 0;
    plist_to_xml(nodes, &text, &length);
    QByteArray xml(text, static_cast<int>(length));
    std::free(text);
    plist_free(nodes);
    return xml;
}

// Takes each entry's keys and values out of the nodes and frees them; tells how many bytes of text
// there were.
std::size_t readNodes(plist_t nodes)
{
    std::size_t size = 0;
    std::vector<std::map<std::string, std::string>> texts;
    std::vector<double> numbers;
    for (uint32_t i = 0; i < plist_array_get_size(nodes); ++i) {
        auto *const entry = plist_array_get_item(nodes, i);
        auto &map = texts.emplace_back();
        plist_dict_iter iterator = nullptr;
        plist_dict_new_iter(entry, &iterator);
        char *key = nullptr;
        plist_t value = nullptr;
        while (plist_dict_next_item(entry, iterator, &key, &value), value != nullptr) {
            auto &text = map[key];
            uint64_t number = 0;
            double real = 0;
            switch (plist_get_node_type(value)) {
            case PLIST_STRING:
                text = plist_get_string_ptr(value, nullptr);
                break;
            case PLIST_REAL:
                plist_get_real_val(value, &real);
                numbers.push_back(real);
                break;
            case PLIST_UINT:
                plist_get_uint_val(value, &number);
                numbers.push_back(static_cast<double>(number));
                break;
            default:
                numbers.push_back(plist_bool_val_is_true(value));
            }
            size += std::strlen(key) + text.size();
            std::free(key);
        }
        std::free(iterator);
    }
    plist_free(nodes);
    return size;
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
    const auto peersReadXml = [&] { readNodes(nodeFromXml(xml)); };
    const auto peersWriteXml = [] { xmlFromNodes(makeNodes()); };
    require(xmlFromNodes(makeNodes()) == xml);
    require(readNodes(nodeFromXml(xml)) > 0);
    std::printf("A list of %d entries, %d bytes; medians of %d rounds.\n", entries,
                static_cast<int>(xml.size()), rounds);
    compare("read XML", readXml, peersReadXml);
    compare("write XML", writeXml, peersWriteXml);
    compare(
        "read and write XML", [&] { readXml(), writeXml(); },
        [&] { peersReadXml(), peersWriteXml(); });
    compare(
        "read binary", [&] { platform::propertyListFromData(binary); },
        [&] { readNodes(nodeFromBinary(binary)); });
    plist_free(node);
}
