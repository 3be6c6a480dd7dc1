// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

#include <string>
#include <string_view>

namespace platform {

// Writes the XML form of a property list, with tabs, as the platform does.
class PropertyListXmlWriter {
public:
    // False, with the reason in error(), for a value that a property list cannot hold and for one
    // that would be too large or too deep to be read again.
    bool write(const QVariant &value);

    const std::string &xml() const { return m_xml; }
    const QString &error() const { return m_error; }

private:
    bool isSmallEnough();
    bool writeValue(const QVariant &value, int depth);
    bool writeArray(const QVariantList &array, int depth);
    bool writeDictionary(const QVariantMap &dictionary, int depth);
    bool writeContainer(std::string_view name, bool empty, int depth);
    void writeData(const QByteArray &data, int depth);
    void writeElement(std::string_view name, std::string_view content, int depth);
    void writeText(std::string_view name, const QString &text, int depth);
    void appendText(const QString &text);
    void indent(int depth) { m_xml.append(static_cast<std::size_t>(depth), '\t'); }
    bool fail(const QString &error);

    std::string m_xml;
    QString m_error;
};

} // namespace platform
