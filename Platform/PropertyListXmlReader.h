// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/PropertyListXmlScanner.h"

#include <QVariant>

#include <optional>

namespace platform {

// Reads the XML form of a property list.
class PropertyListXmlReader {
public:
    explicit PropertyListXmlReader(std::string_view utf8) : m_scanner(utf8) {}

    // The value; nothing where the text is malformed, cut short or nested too deeply. What follows
    // the list is not looked at. Of a key that stands twice in a dictionary the last value counts.
    std::optional<QVariant> read();

private:
    using Tag = PropertyListXmlScanner::Tag;

    bool readValue(const Tag &tag, int depth, QVariant &value);
    bool readDictionary(int depth, QVariant &value);
    bool readArray(int depth, QVariant &value);
    bool readScalar(const Tag &tag, QVariant &value);

    PropertyListXmlScanner m_scanner;
};

} // namespace platform
