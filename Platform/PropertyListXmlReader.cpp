// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PropertyListXmlReader.h"

#include "Platform/PropertyListLimits.h"
#include "Platform/PropertyListScalars.h"

#include <QDateTime>

namespace platform {
namespace {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view space = " \t\r\n";
    const auto first = text.find_first_not_of(space);
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(space) + 1 - first);
}

template <typename Scalar>
bool take(const std::optional<Scalar> &scalar, QVariant &value)
{
    if (scalar) {
        value = *scalar;
    }
    return scalar.has_value();
}

} // namespace

std::optional<QVariant> PropertyListXmlReader::read()
{
    Tag tag;
    QVariant value;
    if (!m_scanner.skipProlog() || !m_scanner.nextTag(tag)) {
        return std::nullopt;
    }
    auto whole = false;
    if (tag.name != "plist") {
        whole = readValue(tag, 1, value);
    } else if (!tag.closing && !tag.empty) {
        whole = m_scanner.nextTag(tag) && readValue(tag, 1, value) && m_scanner.nextTag(tag) &&
                tag.closing && tag.name == "plist";
    }
    return whole ? std::optional(value) : std::nullopt;
}

bool PropertyListXmlReader::readValue(const Tag &tag, int depth, QVariant &value)
{
    if (tag.closing) {
        return false;
    }
    const auto dictionary = tag.name == "dict";
    if (!dictionary && tag.name != "array") {
        return readScalar(tag, value);
    }
    if (depth > propertylist::maximumDepth) {
        return false;
    }
    if (tag.empty) {
        value = dictionary ? QVariant(QVariantMap()) : QVariant(QVariantList());
        return true;
    }
    return dictionary ? readDictionary(depth, value) : readArray(depth, value);
}

bool PropertyListXmlReader::readDictionary(int depth, QVariant &value)
{
    QVariantMap dictionary;
    Tag tag;
    while (m_scanner.nextTag(tag)) {
        if (tag.closing) {
            value = dictionary;
            return tag.name == "dict";
        }
        std::string_view content;
        if (tag.name != "key" || !m_scanner.readContent(tag, content)) {
            return false;
        }
        const auto key = propertylist::textFromUtf8(content);
        QVariant item;
        if (!m_scanner.nextTag(tag) || !readValue(tag, depth + 1, item)) {
            return false;
        }
        // Writers sort the keys, so each belongs at the end as a rule.
        dictionary.insert(dictionary.cend(), key, item);
    }
    return false;
}

bool PropertyListXmlReader::readArray(int depth, QVariant &value)
{
    QVariantList array;
    Tag tag;
    while (m_scanner.nextTag(tag)) {
        if (tag.closing) {
            value = array;
            return tag.name == "array";
        }
        QVariant item;
        if (!readValue(tag, depth + 1, item)) {
            return false;
        }
        array.append(item);
    }
    return false;
}

bool PropertyListXmlReader::readScalar(const Tag &tag, QVariant &value)
{
    std::string_view content;
    if (!m_scanner.readContent(tag, content)) {
        return false;
    }
    if (tag.name == "string") {
        value = propertylist::textFromUtf8(content);
        return true;
    }
    content = trimmed(content);
    if (tag.name == "integer") {
        return take(propertylist::integerFromText(content), value);
    }
    if (tag.name == "real") {
        return take(propertylist::realFromText(content), value);
    }
    if (tag.name == "date") {
        return take(propertylist::dateFromText(content), value);
    }
    if (tag.name == "data") {
        return take(propertylist::dataFromText(content), value);
    }
    value = tag.name == "true";
    return content.empty() && (tag.name == "true" || tag.name == "false");
}

} // namespace platform
