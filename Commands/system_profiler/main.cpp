// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
//
// system_profiler: tells what network interfaces the computer has.

#include "Commands/system_profiler/NetworkLinks.h"
#include "Commands/system_profiler/NetworkManagerNames.h"
#include "Commands/system_profiler/NetworkProfile.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace {

constexpr auto failed = 1;
constexpr auto misused = 2;
constexpr const char *dataType = "SPNetworkDataType";
// A pane is about to open; a name is not worth more.
constexpr std::chrono::milliseconds namesTimeout{30};

void printUsage(std::FILE *file)
{
    std::fputs("usage: system_profiler SPNetworkDataType -xml  list the network interfaces as a\n"
               "                                               property list\n"
               "       system_profiler -listDataTypes          list the data types\n"
               "       system_profiler -usage\n",
               file);
}

// What an interface is called where nobody has given it a name.
std::string kindOf(const NetworkLink &link)
{
    for (const auto &[kind, name] : {std::pair("bridge", "Bridge"), std::pair("bond", "Bond"),
                                     std::pair("team", "Team"), std::pair("vlan", "VLAN")}) {
        if (link.kind == kind) {
            return name;
        }
    }
    const auto radio = "/sys/class/net/" + link.name + "/phy80211";
    return ::access(radio.c_str(), F_OK) == 0 ? "Wi-Fi" : "Ethernet";
}

std::vector<NetworkService> servicesOf(const std::vector<NetworkLink> &links)
{
    std::vector<NetworkService> services;
    if (links.empty()) {
        return services;
    }
    const auto names = networkManagerNames(namesTimeout);
    for (const auto &link : links) {
        const auto name = names.find(link.name);
        services.push_back(
            {name != names.end() ? name->second : kindOf(link), link.name, hardwareAddress(link)});
    }
    return services;
}

int printed(const std::string &text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
        std::fflush(stdout) == 0) {
        return 0;
    }
    std::fprintf(stderr, "system_profiler: cannot write: %s\n",
                 std::strerror(errno)); // NOLINT(concurrency-mt-unsafe)
    return failed;
}

int printNetworkProfile()
{
    std::vector<NetworkLink> links;
    std::string error;
    if (!readNetworkLinks(links, error)) {
        std::fprintf(stderr, "system_profiler: cannot read the network interfaces: %s\n",
                     error.c_str());
        return failed;
    }
    return printed(networkProfile(servicesOf(offeredLinks(links))));
}

} // namespace

int main(int argc, char **argv)
{
    auto xml = false;
    auto network = false;
    for (auto at = 1; at < argc; ++at) {
        const std::string_view argument(argv[at]); // NOLINT(*-pointer-arithmetic)
        if (argument == "-usage" || argument == "--help" || argument == "-h") {
            printUsage(stdout);
            return 0;
        }
        if (argument == "-listDataTypes") {
            return printed(std::string(dataType) + '\n');
        }
        if (argument != "-xml" && argument != dataType) {
            const auto *kind = argument.substr(0, 1) == "-" ? "option" : "data type";
            std::fprintf(stderr, "system_profiler: unknown %s \"%s\"\n", kind,
                         xmlText(argument).c_str());
            printUsage(stderr);
            return misused;
        }
        (argument == "-xml" ? xml : network) = true;
    }
    if (!xml || !network) {
        printUsage(stderr);
        return misused;
    }
    return printNetworkProfile();
}
