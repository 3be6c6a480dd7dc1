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
};

// Adds all interfaces of this network namespace, sorted by name. False, with the reason in error,
// where the kernel does not tell.
bool readNetworkLinks(std::vector<NetworkLink> &links, std::string &error);

// Whether it is offered: an interface with a hardware address of its own.
bool isOffered(const NetworkLink &link);

// The permanent address, else the current one, as lower-case "0a:1b:2c:3d:4e:5f".
std::string hardwareAddress(const NetworkLink &link);
