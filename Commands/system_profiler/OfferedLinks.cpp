// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/system_profiler/NetworkLinks.h"

#include <net/if_arp.h>

#include <algorithm>
#include <string_view>

namespace {

constexpr std::size_t addressSize = 6; // of Ethernet
constexpr auto maxDepth = 8;           // as the kernel stacks interfaces

using Links = std::vector<NetworkLink>;

bool isUsable(const std::string &address)
{
    return address.size() == addressSize &&
           std::any_of(address.begin(), address.end(), [](char byte) { return byte != 0; });
}

// One that takes ports in, and speaks for them.
bool isGroup(const NetworkLink &link)
{
    return link.kind == "bridge" || link.kind == "bond" || link.kind == "team";
}

bool isPortOf(const NetworkLink &link, const NetworkLink &other)
{
    return link.master != 0 && link.master == other.index && isGroup(other);
}

bool isPort(const Links &links, const NetworkLink &link)
{
    return std::any_of(links.begin(), links.end(),
                       [&](const NetworkLink &other) { return isPortOf(link, other); });
}

// Whether the upper one is made of the lower one, as a VLAN of it or with it as a port.
bool isAbove(const NetworkLink &upper, const NetworkLink &lower)
{
    return (upper.kind == "vlan" && upper.lower == lower.index) || isPortOf(lower, upper);
}

bool standsOnDevice(const Links &links, const NetworkLink &link, int depth = 0)
{
    return link.hasDevice ||
           (depth < maxDepth &&
            std::any_of(links.begin(), links.end(), [&](const NetworkLink &lower) {
                return isAbove(link, lower) && standsOnDevice(links, lower, depth + 1);
            }));
}

bool isCarriedAbove(const Links &links, const NetworkLink &link, int depth = 0)
{
    return depth < maxDepth &&
           std::any_of(links.begin(), links.end(), [&](const NetworkLink &upper) {
               return isAbove(upper, link) &&
                      (upper.carriesAddress || isCarriedAbove(links, upper, depth + 1));
           });
}

// Bridges and pairs of containers and machines, tunnels and the loopback stand on no device: their
// address is made up or none, and what reaches them comes in by an interface that is offered.
// Point-to-point and field-bus devices have no Ethernet address. An address that the kernel made up
// for a device without one is another after the next start, so that choosing it would cut the
// listener off. Of interfaces on top of one another it is the one that carries the computer's
// address that the listener can be reached by: the bridge or bond and not its port, the VLAN and
// not a card that has none itself.
bool isOffered(const Links &links, const NetworkLink &link)
{
    const auto hasOwnAddress =
        isUsable(link.permanentAddress) || (isUsable(link.address) && !link.isRandom);
    return link.type == ARPHRD_ETHER && hasOwnAddress && standsOnDevice(links, link) &&
           !isPort(links, link) && (link.kind != "vlan" || link.carriesAddress) &&
           (link.carriesAddress || !isCarriedAbove(links, link));
}

} // namespace

Links offeredLinks(const Links &links)
{
    Links offered;
    std::copy_if(links.begin(), links.end(), std::back_inserter(offered),
                 [&](const NetworkLink &link) { return isOffered(links, link); });
    return offered;
}

std::string hardwareAddress(const NetworkLink &link)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char byte : isUsable(link.permanentAddress) ? link.permanentAddress : link.address) {
        const auto value = static_cast<unsigned char>(byte);
        text += text.empty() ? "" : ":";
        text += digits[value >> 4U];
        text += digits[value & 0xFU];
    }
    return text;
}
