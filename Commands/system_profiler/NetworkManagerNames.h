// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <map>
#include <string>

// The names of the connections that NetworkManager has up, by the kernel's name of the interface.
// Empty where it does not run and where it has not answered in time.
std::map<std::string, std::string> networkManagerNames(std::chrono::milliseconds time);
