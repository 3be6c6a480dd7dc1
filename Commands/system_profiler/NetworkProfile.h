// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct NetworkService {
    std::string name;      // for people
    std::string interface; // the kernel's name
    std::string address;   // hardware address
};

// The text for an XML file in ASCII: with references in place of markup and of all that is not
// ASCII; U+FFFD for what is not UTF-8 and what XML cannot hold.
std::string xmlText(std::string_view utf8);

// The property list: an array with one dictionary, its items the services in their order. Pure
// ASCII, as its readers take it for.
std::string networkProfile(const std::vector<NetworkService> &services);
