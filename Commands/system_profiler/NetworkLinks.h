// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

// A network interface as the kernel tells of it.
struct NetworkLink {
    std::string name;             // of any bytes but "/", ":" and white space
    std::string address;          // the current hardware address, raw bytes
    std::string permanentAddress; // the one that came with the hardware; empty where none is known
    unsigned type = 0;            // ARPHRD_*
    bool hasDevice = false;       // stands on a device of the computer
    bool isRandom = false;        // the kernel made the current address up
    std::string kind;             // "bridge", "bond", "team", "vlan"...; empty for a card
    int index = 0;
    int master = 0;              // the index of the one whose port it is
    int lower = 0;               // of a VLAN: the index of the one that it is on
    bool carriesAddress = false; // has an Internet address that is not its link's alone
};

// Adds all interfaces of this network namespace, sorted by name. False, with the reason in error,
// where the kernel does not tell.
bool readNetworkLinks(std::vector<NetworkLink> &links, std::string &error);

// Those of all interfaces that are offered: the ones with a hardware address of their own that the
// computer is reached by.
std::vector<NetworkLink> offeredLinks(const std::vector<NetworkLink> &links);

// The permanent address, else the current one, as lower-case "0a:1b:2c:3d:4e:5f".
std::string hardwareAddress(const NetworkLink &link);
