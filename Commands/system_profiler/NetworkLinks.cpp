// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/system_profiler/NetworkLinks.h"

#include "Platform/Core/Basics/Descriptor.h"

#include <ifaddrs.h>
#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if_arp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <set>
#include <string_view>

namespace {

// The structure that the bytes begin with; zeros where they are too few.
template <typename Structure>
Structure beginning(std::string_view bytes)
{
    Structure structure{};
    if (bytes.size() >= sizeof structure) {
        std::memcpy(&structure, bytes.data(), sizeof structure);
    }
    return structure;
}

// Takes the next record, whose header says how long it is, and what fills it up to four bytes.
// Empty at the end.
template <typename Header, typename Length>
std::string_view takeRecord(std::string_view &bytes, Length Header::*length)
{
    const std::size_t size = beginning<Header>(bytes).*length;
    if (size < sizeof(Header) || size > bytes.size()) {
        return {};
    }
    const auto record = bytes.substr(0, size);
    bytes.remove_prefix(std::min(bytes.size(), (size + 3) / 4 * 4));
    return record;
}

constexpr auto typeMask = static_cast<unsigned>(NLA_TYPE_MASK);
using TakeAttribute = std::function<void(unsigned type, std::string_view contents)>;

void readAttributes(std::string_view bytes, const TakeAttribute &take)
{
    for (auto record = takeRecord(bytes, &rtattr::rta_len); !record.empty();
         record = takeRecord(bytes, &rtattr::rta_len)) {
        take(beginning<rtattr>(record).rta_type & typeMask, record.substr(sizeof(rtattr)));
    }
}

std::string textOf(std::string_view bytes)
{
    return std::string(bytes.substr(0, bytes.find('\0')));
}

NetworkLink linkOf(std::string_view message)
{
    const auto fixed = beginning<ifinfomsg>(message);
    NetworkLink link;
    link.type = fixed.ifi_type;
    link.index = fixed.ifi_index;
    message.remove_prefix(std::min(message.size(), sizeof fixed));
    readAttributes(message, [&](unsigned type, std::string_view contents) {
        switch (type) {
        case IFLA_IFNAME:
            link.name = textOf(contents);
            break;
        case IFLA_ADDRESS:
            link.address = contents;
            break;
        case IFLA_PERM_ADDRESS:
            link.permanentAddress = contents;
            break;
        case IFLA_MASTER:
            link.master = beginning<int>(contents);
            break;
        case IFLA_LINK:
            link.lower = beginning<int>(contents);
            break;
        case IFLA_LINKINFO:
            readAttributes(contents, [&](unsigned detail, std::string_view text) {
                link.kind = detail == IFLA_INFO_KIND ? textOf(text) : link.kind;
            });
            break;
        default:
            break;
        }
    });
    return link;
}

// 0, else the reason (errno).
int readAnswer(int socket, std::vector<NetworkLink> &links)
{
    std::array<char, 65536> buffer; // the kernel fills half of it at most
    for (;;) {
        const auto size = ::recv(socket, buffer.data(), buffer.size(), 0);
        if (size <= 0) {
            return size < 0 ? errno : EIO;
        }
        std::string_view bytes(buffer.data(), static_cast<std::size_t>(size));
        for (auto record = takeRecord(bytes, &nlmsghdr::nlmsg_len); !record.empty();
             record = takeRecord(bytes, &nlmsghdr::nlmsg_len)) {
            const auto header = beginning<nlmsghdr>(record);
            record.remove_prefix(sizeof header);
            if (header.nlmsg_type == NLMSG_DONE || header.nlmsg_type == NLMSG_ERROR) {
                return -beginning<int>(record);
            }
            if (header.nlmsg_type == RTM_NEWLINK) {
                links.push_back(linkOf(record));
            }
        }
    }
}

int askForLinks(std::vector<NetworkLink> &links)
{
    struct Request {
        nlmsghdr header;
        ifinfomsg message;
    } request{};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = RTM_GETLINK;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    const platform::Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    if (!socket.isOpen() || ::send(socket.fd(), &request, sizeof request, 0) < 0) {
        return errno;
    }
    return readAnswer(socket.fd(), links);
}

// An address that others can reach; every interface that is up has one of its own link.
bool isReachable(const sockaddr *address)
{
    if (address == nullptr || address->sa_family != AF_INET6) {
        return address != nullptr && address->sa_family == AF_INET;
    }
    sockaddr_in6 inet6{};
    std::memcpy(&inet6, address, sizeof inet6);
    return !IN6_IS_ADDR_LINKLOCAL(&inet6.sin6_addr); // NOLINT
}

// The names of the interfaces that have an Internet address.
int readCarriers(std::set<std::string> &names)
{
    ifaddrs *first = nullptr;
    if (::getifaddrs(&first) != 0) {
        return errno;
    }
    for (const auto *entry = first; entry != nullptr; entry = entry->ifa_next) {
        if (isReachable(entry->ifa_addr)) {
            names.insert(entry->ifa_name);
        }
    }
    ::freeifaddrs(first);
    return 0;
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
    std::set<std::string> carriers;
    auto reason = askForLinks(links);
    reason = reason == 0 ? readCarriers(carriers) : reason;
    if (reason != 0) {
        error = std::strerror(reason); // NOLINT(concurrency-mt-unsafe)
        return false;
    }
    for (auto &link : links) {
        link.carriesAddress = carriers.count(link.name) != 0;
        addFromFiles(link);
    }
    // The kernel's order is that of plugging in; this one stays. "eth2" stands before "eth10".
    std::sort(links.begin(), links.end(), [](const NetworkLink &one, const NetworkLink &other) {
        return ::strverscmp(one.name.c_str(), other.name.c_str()) < 0;
    });
    return true;
}
