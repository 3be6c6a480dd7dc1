// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <string>

// SystemCommand.h in plain C++, for programs without Qt.
namespace platform {

std::string commandPath(const std::string &path);
std::string privateCommandPath();

} // namespace platform
