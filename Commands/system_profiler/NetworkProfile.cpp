// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/system_profiler/NetworkProfile.h"

#include <cstddef>

namespace {

constexpr char32_t replacement = 0xFFFD;

// Takes the first character off the text; the replacement where it does not begin with one.
char32_t takeCharacter(std::string_view &text)
{
    const auto byteAt = [&text](std::size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    const auto first = byteAt(0);
    const std::size_t size = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    char32_t character = size == 1 ? first : first & (0x7FU >> size);
    auto whole = first < 0x80 || (first >= 0xC2 && first <= 0xF4);
    for (std::size_t at = 1; whole && at < size; ++at) {
        whole = (byteAt(at) & 0xC0U) == 0x80;
        character = character << 6U | (byteAt(at) & 0x3FU);
    }
    const auto isSurrogate = character >= 0xD800 && character < 0xE000;
    whole = whole && !isSurrogate && character <= 0x10FFFF && !(size == 3 && character < 0x800) &&
            !(size == 4 && character < 0x10000);
    text.remove_prefix(whole ? size : 1);
    return whole ? character : replacement;
}

bool isXmlCharacter(char32_t character)
{
    return character >= 0x20 ? character != 0xFFFE && character != 0xFFFF
                             : character == '\t' || character == '\n' || character == '\r';
}

std::string pair(std::string_view indent, std::string_view key, std::string_view value)
{
    std::string text;
    text.append(indent).append("<key>").append(key).append("</key>\n");
    text.append(indent).append("<string>").append(xmlText(value)).append("</string>\n");
    return text;
}

std::string item(const NetworkService &service)
{
    constexpr std::string_view indent = "\t\t\t\t";
    constexpr std::string_view deeper = "\t\t\t\t\t";
    std::string text("\t\t\t<dict>\n\t\t\t\t<key>Ethernet</key>\n\t\t\t\t<dict>\n");
    text += pair(deeper, "MAC Address", service.address);
    text += "\t\t\t\t</dict>\n";
    text += pair(indent, "_name", service.name);
    text += pair(indent, "interface", service.interface);
    return text + "\t\t\t</dict>\n";
}

} // namespace

std::string xmlText(std::string_view utf8)
{
    constexpr std::string_view markup = "<>&\"'";
    std::string text;
    while (!utf8.empty()) {
        auto character = takeCharacter(utf8);
        character = isXmlCharacter(character) ? character : replacement;
        const auto ascii = static_cast<char>(character & 0x7FU);
        if (character >= 0x20 && character < 0x7F && markup.find(ascii) == std::string_view::npos) {
            text += ascii;
        } else {
            text += "&#" + std::to_string(static_cast<unsigned long>(character)) + ";";
        }
    }
    return text;
}

std::string networkProfile(const std::vector<NetworkService> &services)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<plist version=\"1.0\">\n"
                       "<array>\n"
                       "\t<dict>\n"
                       "\t\t<key>_dataType</key>\n"
                       "\t\t<string>SPNetworkDataType</string>\n"
                       "\t\t<key>_items</key>\n"
                       "\t\t<array>\n";
    for (const auto &service : services) {
        text += item(service);
    }
    return text + "\t\t</array>\n\t</dict>\n</array>\n</plist>\n";
}
