// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace platform {

// Text from elsewhere as part of one line of a log: what is not printable ASCII, and "%" itself, is
// percent-encoded, so that nobody can begin a line of his own or steer a terminal.
inline std::string logText(std::string_view text)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    result.reserve(text.size());
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte < 0x7f && byte != '%') {
            result += character;
        } else {
            result += {'%', digits[byte >> 4U], digits[byte & 0xfU]};
        }
    }
    return result;
}

} // namespace platform
