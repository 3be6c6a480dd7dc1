// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PropertyListXmlScanner.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace platform {
namespace {

constexpr auto none = std::string_view::npos;

constexpr bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

void appendUtf8(std::string &text, std::uint32_t character)
{
    const auto byte = [&text](std::uint32_t bits) { text.push_back(static_cast<char>(bits)); };
    const auto following = [&byte](std::uint32_t bits) { byte(0x80U | (bits & 0x3FU)); };
    if (character < 0x80) {
        byte(character);
        return;
    }
    if (character < 0x800) {
        byte(0xC0U | character >> 6U);
    } else {
        if (character < 0x10000) {
            byte(0xE0U | character >> 12U);
        } else {
            byte(0xF0U | character >> 18U);
            following(character >> 12U);
        }
        following(character >> 6U);
    }
    following(character);
}

// The character of a reference: the text between "&" and ";". 0 where it names none.
std::uint32_t referredCharacter(std::string_view name)
{
    if (name.substr(0, 1) != "#") {
        for (const auto &[entity, character] :
             {std::pair("lt", '<'), {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}}) {
            if (name == entity) {
                return static_cast<std::uint32_t>(character);
            }
        }
        return 0;
    }
    const auto hexadecimal = name.substr(1, 1) == "x";
    name.remove_prefix(hexadecimal ? 2 : 1);
    std::uint32_t code = 0;
    const auto *end = name.data() + name.size();
    const auto result = std::from_chars(name.data(), end, code, hexadecimal ? 16 : 10);
    const auto known = result.ec == std::errc() && result.ptr == end && code <= 0x10FFFF &&
                       (code < 0xD800 || code > 0xDFFF);
    return known ? code : 0;
}

} // namespace

bool PropertyListXmlScanner::skipProlog()
{
    if (!skipToMarkup() || !skip("<!DOCTYPE")) {
        return startsWith("<");
    }
    for (auto inBrackets = false;;) {
        m_rest.remove_prefix(std::min(m_rest.find_first_of("\"'[]<>"), m_rest.size()));
        if (m_rest.empty()) {
            return false;
        }
        if (skip("<!--")) {
            if (!skipPast("-->")) {
                return false;
            }
            continue;
        }
        const auto found = m_rest.substr(0, 1);
        m_rest.remove_prefix(1);
        if (found == ">" && !inBrackets) {
            return true;
        }
        if (found == "[" || found == "]") {
            inBrackets = found == "[";
        } else if ((found == "\"" || found == "'") && !skipPast(found)) {
            return false;
        }
    }
}

bool PropertyListXmlScanner::nextTag(Tag &tag)
{
    return skipToMarkup() && readTag(tag);
}

bool PropertyListXmlScanner::skipToMarkup()
{
    for (;;) {
        const auto *text = std::find_if_not(m_rest.begin(), m_rest.end(), isSpace);
        m_rest.remove_prefix(static_cast<std::size_t>(text - m_rest.begin()));
        if (skip("<!--")) {
            if (!skipPast("-->")) {
                return false;
            }
        } else if (skip("<?")) {
            if (!skipPast("?>")) {
                return false;
            }
        } else {
            return startsWith("<");
        }
    }
}

bool PropertyListXmlScanner::skipPast(std::string_view end)
{
    const auto at = m_rest.find(end);
    m_rest.remove_prefix(at == none ? m_rest.size() : at + end.size());
    return at != none;
}

bool PropertyListXmlScanner::skip(std::string_view text)
{
    const auto there = startsWith(text);
    if (there) {
        m_rest.remove_prefix(text.size());
    }
    return there;
}

bool PropertyListXmlScanner::readTag(Tag &tag)
{
    m_rest.remove_prefix(1);
    tag.closing = skip("/");
    tag.empty = false;
    const auto *nameEnd = std::find_if(m_rest.begin(), m_rest.end(),
                                       [](char c) { return c == '>' || c == '/' || isSpace(c); });
    tag.name = m_rest.substr(0, static_cast<std::size_t>(nameEnd - m_rest.begin()));
    m_rest.remove_prefix(tag.name.size());
    if (tag.name.empty()) {
        return false;
    }
    for (;;) {
        if (skip(">")) {
            return true;
        }
        const auto at = m_rest.find_first_of("\"'/>");
        if (at == none) {
            return false;
        }
        const auto found = m_rest.substr(at, 1);
        m_rest.remove_prefix(at);
        if (found == "/") {
            m_rest.remove_prefix(1);
            tag.empty = !tag.closing && startsWith(">");
        } else if (found != ">") {
            m_rest.remove_prefix(1);
            if (!skipPast(found)) {
                return false;
            }
        }
    }
}

bool PropertyListXmlScanner::readContent(const Tag &tag, std::string_view &content)
{
    if (tag.empty) {
        content = {};
        return true;
    }
    const auto end = m_rest.find('<');
    if (end == none) {
        return false;
    }
    content = m_rest.substr(0, end);
    if (m_rest.substr(end, 2) == "</" && content.find('&') == none) {
        m_rest.remove_prefix(end);
    } else {
        if (!readPieces()) {
            return false;
        }
        content = m_content;
    }
    Tag closing;
    return readTag(closing) && closing.closing && closing.name == tag.name;
}

bool PropertyListXmlScanner::readPieces()
{
    m_content.clear();
    for (;;) {
        const auto at = m_rest.find_first_of("<&");
        if (at == none) {
            return false;
        }
        m_content.append(m_rest.substr(0, at));
        m_rest.remove_prefix(at);
        auto whole = true;
        if (startsWith("</")) {
            return true;
        }
        if (skip("<![CDATA[")) {
            const auto section = m_rest;
            whole = skipPast("]]>");
            m_content.append(section.substr(0, section.size() - m_rest.size() - (whole ? 3 : 0)));
        } else if (skip("<!--")) {
            whole = skipPast("-->");
        } else if (skip("<?")) {
            whole = skipPast("?>");
        } else {
            whole = skip("&") && readReference();
        }
        if (!whole) {
            return false;
        }
    }
}

bool PropertyListXmlScanner::readReference()
{
    constexpr std::size_t longest = 16;
    const auto end = m_rest.substr(0, longest).find(';');
    const auto character = end == none ? 0 : referredCharacter(m_rest.substr(0, end));
    if (character == 0) {
        return false;
    }
    m_rest.remove_prefix(end + 1);
    appendUtf8(m_content, character);
    return true;
}

} // namespace platform
