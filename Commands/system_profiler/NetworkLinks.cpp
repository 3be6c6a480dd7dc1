// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/system_profiler/NetworkLinks.h"

#include "Platform/Core/Basics/Descriptor.h"

#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

namespace {

constexpr std::size_t bufferSize = std::size_t(256) * 1024;
constexpr std::size_t addressSize = 6; // of Ethernet
constexpr std::size_t alignment = 4;   // of messages and attributes

constexpr std::size_t aligned(std::size_t size)
{
    return (size + alignment - 1) / alignment * alignment;
}

template <typename Type>
bool read(std::string_view bytes, Type &value)
{
    if (bytes.size() < sizeof value) {
        return false;
    }
    std::memcpy(&value, bytes.data(), sizeof value);
    return true;
}

bool isNothing(std::string_view address)
{
    return std::all_of(address.begin(), address.end(), [](char byte) { return byte == 0; });
}

void takeAttribute(unsigned type, std::string_view value, NetworkLink &link)
{
    switch (type) {
    case IFLA_IFNAME:
        link.name = value.substr(0, value.find('\0'));
        break;
    case IFLA_ADDRESS:
        link.address = value;
        break;
    case IFLA_PERM_ADDRESS:
        link.permanentAddress = value;
        break;
    case IFLA_PARENT_DEV_NAME:
        link.hasDevice = true;
        break;
    default:
        break;
    }
}

// The body of a message: a header, then attributes, each with a header of its own.
bool linkFromMessage(std::string_view body, NetworkLink &link)
{
    ifinfomsg header{};
    if (!read(body, header)) {
        return false;
    }
    link.type = header.ifi_type;
    body.remove_prefix(std::min(body.size(), aligned(sizeof header)));
    rtattr attribute{};
    while (read(body, attribute)) {
        const std::size_t size = attribute.rta_len;
        if (size < sizeof attribute || size > body.size()) {
            return false;
        }
        takeAttribute(attribute.rta_type & static_cast<unsigned>(NLA_TYPE_MASK),
                      body.substr(sizeof attribute, size - sizeof attribute), link);
        body.remove_prefix(std::min(body.size(), aligned(size)));
    }
    return !link.name.empty();
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

// What only the files of the kernel tell; where they are not mounted there is nothing to add.
void addFromFiles(NetworkLink &link)
{
    constexpr auto random = "1"; // NET_ADDR_RANDOM
    const auto folder = "/sys/class/net/" + link.name;
    // Kernels before 5.14 do not name the device in the message.
    link.hasDevice = link.hasDevice || ::access((folder + "/device").c_str(), F_OK) == 0;
    link.isRandom = link.hasDevice && wordFrom(folder + "/addr_assign_type") == random;
}

bool askForLinks(int socket)
{
    struct {
        nlmsghdr header;
        ifinfomsg body;
        rtattr attribute;
        std::uint32_t mask;
    } request{};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = RTM_GETLINK;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.attribute.rta_type = IFLA_EXT_MASK;
    request.attribute.rta_len = sizeof request.attribute + sizeof request.mask;
    request.mask = RTEXT_FILTER_SKIP_STATS;
    return ::send(socket, &request, sizeof request, 0) == ssize_t{sizeof request};
}

LinkListState readList(std::vector<NetworkLink> &links)
{
    const platform::Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    if (!socket.isOpen() || !askForLinks(socket.number())) {
        return {true, false, errno};
    }
    LinkListState state;
    const auto buffer = std::make_unique<std::array<char, bufferSize>>();
    while (!state.ended) {
        const auto size = ::recv(socket.number(), buffer->data(), buffer->size(), 0);
        if (size > 0) {
            addLinksFromMessages(buffer->data(), static_cast<std::size_t>(size), links, state);
        } else if (size == 0 || errno != EINTR) {
            return {true, false, size == 0 ? EBADMSG : errno};
        }
    }
    return state;
}

} // namespace

void addLinksFromMessages(const char *bytes, std::size_t size, std::vector<NetworkLink> &links,
                          LinkListState &state)
{
    std::string_view rest(bytes, size);
    nlmsghdr header{};
    while (!state.ended && read(rest, header)) {
        if (header.nlmsg_len < sizeof header || header.nlmsg_len > rest.size()) {
            break;
        }
        const auto body = rest.substr(sizeof header, header.nlmsg_len - sizeof header);
        NetworkLink link;
        nlmsgerr refusal{};
        if (header.nlmsg_type == NLMSG_ERROR) {
            state = {true, state.torn, read(body, refusal) ? -refusal.error : EBADMSG};
            return;
        }
        if (header.nlmsg_type == RTM_NEWLINK && linkFromMessage(body, link)) {
            links.push_back(std::move(link));
        }
        state.ended = header.nlmsg_type == NLMSG_DONE;
        state.torn = state.torn || (header.nlmsg_flags & NLM_F_DUMP_INTR) != 0;
        rest.remove_prefix(std::min(rest.size(), aligned(header.nlmsg_len)));
    }
    if (!state.ended && !rest.empty()) {
        state = {true, state.torn, EBADMSG};
    }
}

bool readNetworkLinks(std::vector<NetworkLink> &links, std::string &error)
{
    constexpr auto mostAttempts = 5;
    LinkListState state;
    for (auto attempt = 0; attempt < mostAttempts && (attempt == 0 || state.torn); ++attempt) {
        links.clear();
        state = readList(links);
    }
    if (state.error != 0) {
        error = std::strerror(state.error); // NOLINT(concurrency-mt-unsafe)
        return false;
    }
    for (auto &link : links) {
        addFromFiles(link);
    }
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
