// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/system_profiler/NetworkLinks.h"

#include "Platform/Core/Basics/Descriptor.h"

#include <ifaddrs.h>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <netpacket/packet.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

namespace {

constexpr std::size_t addressSize = 6; // of Ethernet

bool isNothing(std::string_view address)
{
    return std::all_of(address.begin(), address.end(), [](char byte) { return byte == 0; });
}

// The first word of a file of the kernel; empty where there is no such file.
std::string wordFrom(const std::string &path)
{
    struct Close {
        void operator()(std::FILE *file) const { std::fclose(file); } // NOLINT(*-owning-memory)
    };
    const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "re"));
    std::array<char, 16> word{};
    if (file == nullptr || std::fscanf(file.get(), "%15s", word.data()) != 1) { // NOLINT(*-vararg)
        return {};
    }
    return word.data();
}

// Empty where the driver knows none.
std::string permanentAddress(int socket, const std::string &name)
{
    constexpr std::size_t maxSize = 32; // the kernel's MAX_ADDR_LEN
    ethtool_perm_addr header{};
    header.cmd = ETHTOOL_GPERMADDR;
    header.size = maxSize;
    std::array<char, sizeof header + maxSize> bytes{}; // the address follows the header
    std::memcpy(bytes.data(), &header, sizeof header);
    ifreq request{};
    name.copy(&request.ifr_name[0], IFNAMSIZ - 1);
    request.ifr_data = bytes.data();
    if (::ioctl(socket, SIOCETHTOOL, &request) != 0) { // NOLINT(*-vararg)
        return {};
    }
    std::memcpy(&header, bytes.data(), sizeof header);
    return {&bytes.at(sizeof header), std::min<std::size_t>(header.size, maxSize)};
}

// Where the kernel's files are not mounted there is nothing to add.
void addFromFiles(NetworkLink &link)
{
    constexpr auto random = "1"; // NET_ADDR_RANDOM
    const auto folder = "/sys/class/net/" + link.name;
    link.hasDevice = ::access((folder + "/device").c_str(), F_OK) == 0;
    link.isRandom = link.hasDevice && wordFrom(folder + "/addr_assign_type") == random;
}

} // namespace

bool readNetworkLinks(std::vector<NetworkLink> &links, std::string &error)
{
    const platform::Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifaddrs *first = nullptr;
    if (!socket.isOpen() || ::getifaddrs(&first) != 0) {
        error = std::strerror(errno); // NOLINT(concurrency-mt-unsafe)
        return false;
    }
    for (const auto *entry = first; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_PACKET) {
            continue; // another address of a link
        }
        sockaddr_ll address{};
        std::memcpy(&address, entry->ifa_addr, sizeof address);
        NetworkLink link;
        link.name = entry->ifa_name;
        link.type = address.sll_hatype;
        link.address.assign(reinterpret_cast<const char *>(&address.sll_addr), // NOLINT
                            std::min<std::size_t>(address.sll_halen, sizeof address.sll_addr));
        link.permanentAddress = permanentAddress(socket.fd(), link.name);
        addFromFiles(link);
        links.push_back(std::move(link));
    }
    ::freeifaddrs(first);
    // The kernel's order is that of plugging in; this one stays. "eth2" stands before "eth10".
    std::sort(links.begin(), links.end(), [](const NetworkLink &one, const NetworkLink &other) {
        return ::strverscmp(one.name.c_str(), other.name.c_str()) < 0;
    });
    return true;
}

// Bridges, container and machine pairs, tunnels, VLANs, bonds and the loopback stand on no device:
// their address is made up, borrowed or none, and what reaches them comes in by an interface that
// is offered. Point-to-point and field-bus devices have no Ethernet address. An address that the
// kernel made up for a device without one is another after the next start, so that choosing it
// would cut the listener off.
bool isOffered(const NetworkLink &link)
{
    const auto isUsable = [](const std::string &address) {
        return address.size() == addressSize && !isNothing(address);
    };
    return link.type == ARPHRD_ETHER && link.hasDevice &&
           (isUsable(link.permanentAddress) || (isUsable(link.address) && !link.isRandom));
}

std::string hardwareAddress(const NetworkLink &link)
{
    constexpr std::string_view digits = "0123456789abcdef";
    const auto permanent =
        link.permanentAddress.size() == addressSize && !isNothing(link.permanentAddress);
    std::string text;
    for (const char byte : permanent ? link.permanentAddress : link.address) {
        const auto value = static_cast<unsigned char>(byte);
        text += text.empty() ? "" : ":";
        text += digits[value >> 4U];
        text += digits[value & 0xFU];
    }
    return text;
}
