// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PropertyListXmlWriter.h"

#include "Platform/PropertyListLimits.h"
#include "Platform/PropertyListScalars.h"

#include <QDateTime>

#include <algorithm>

namespace platform {
namespace {

constexpr std::string_view head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                  "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                  "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                  "<plist version=\"1.0\">\n";
constexpr std::string_view tail = "</plist>\n";

std::string_view view(const QByteArray &bytes)
{
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

char *put(char *out, std::string_view text)
{
    return std::copy(text.begin(), text.end(), out);
}

char byte(uint bits)
{
    return static_cast<char>(bits);
}

// Writes one character above U+007F as UTF-8.
char *putCharacter(char *out, uint character)
{
    if (character < 0x800) {
        *out++ = byte(0xC0U | character >> 6U);
    } else {
        if (character < 0x10000) {
            *out++ = byte(0xE0U | character >> 12U);
        } else {
            *out++ = byte(0xF0U | character >> 18U);
            *out++ = byte(0x80U | (character >> 12U & 0x3FU));
        }
        *out++ = byte(0x80U | (character >> 6U & 0x3FU));
    }
    *out++ = byte(0x80U | (character & 0x3FU));
    return out;
}

// Writes one character below U+0080 that means something in XML or cannot stand there.
char *putMarkup(char *out, ushort character)
{
    switch (character) {
    case '<':
        return put(out, "&lt;");
    case '>':
        return put(out, "&gt;");
    case '&':
        return put(out, "&amp;");
    case '\r':
        return put(out, "&#13;"); // else XML readers would take it for a line feed
    default:
        return putCharacter(out, QChar::ReplacementCharacter);
    }
}

bool isPlain(ushort character)
{
    return character < 0x80 ? character >= 0x20
                                  ? character != '<' && character != '>' && character != '&'
                                  : character == '\t' || character == '\n'
                            : false;
}

} // namespace

bool PropertyListXmlWriter::write(const QVariant &value)
{
    m_xml.assign(head);
    if (!value.isValid()) {
        return fail(QStringLiteral("There is nothing to write."));
    }
    if (!writeValue(value, 0)) {
        return false;
    }
    m_xml.append(tail);
    return isSmallEnough();
}

bool PropertyListXmlWriter::isSmallEnough()
{
    return static_cast<qint64>(m_xml.size()) <= propertylist::maximumSize ||
           fail(QStringLiteral("The property list would be too large."));
}

bool PropertyListXmlWriter::writeValue(const QVariant &value, int depth)
{
    if (!isSmallEnough()) {
        return false;
    }
    switch (value.userType()) {
    case QMetaType::UnknownType:
        break; // a null, which the XML form does not have
    case QMetaType::Bool:
        indent(depth);
        m_xml.append(value.toBool() ? "<true/>\n" : "<false/>\n");
        break;
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        writeElement("integer", view(QByteArray::number(value.toLongLong())), depth);
        break;
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        writeElement("integer", view(QByteArray::number(value.toULongLong())), depth);
        break;
    case QMetaType::Float:
    case QMetaType::Double:
        writeElement("real", view(propertylist::textFromReal(value.toDouble())), depth);
        break;
    case QMetaType::QString:
        writeText("string", value.toString(), depth);
        break;
    case QMetaType::QByteArray:
        writeData(value.toByteArray(), depth);
        break;
    case QMetaType::QDateTime: {
        const auto text = propertylist::textFromDate(value.toDateTime());
        if (text.isEmpty()) {
            return fail(QStringLiteral("A date is not valid."));
        }
        writeElement("date", view(text), depth);
        break;
    }
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return writeArray(value.toList(), depth);
    case QMetaType::QVariantMap:
        return writeDictionary(value.toMap(), depth);
    default:
        return fail(QStringLiteral("A property list cannot hold a value of the type “%1”.")
                        .arg(QString::fromLatin1(value.typeName())));
    }
    return true;
}

bool PropertyListXmlWriter::writeArray(const QVariantList &array, int depth)
{
    if (!writeContainer("array", array.isEmpty(), depth)) {
        return false;
    }
    for (const auto &item : array) {
        if (!writeValue(item, depth + 1)) {
            return false;
        }
    }
    if (!array.isEmpty()) {
        indent(depth);
        m_xml.append("</array>\n");
    }
    return true;
}

bool PropertyListXmlWriter::writeDictionary(const QVariantMap &dictionary, int depth)
{
    if (!writeContainer("dict", dictionary.isEmpty(), depth)) {
        return false;
    }
    for (auto item = dictionary.cbegin(); item != dictionary.cend(); ++item) {
        if (!item->isValid()) {
            continue;
        }
        writeText("key", item.key(), depth + 1);
        if (!writeValue(*item, depth + 1)) {
            return false;
        }
    }
    if (!dictionary.isEmpty()) {
        indent(depth);
        m_xml.append("</dict>\n");
    }
    return true;
}

bool PropertyListXmlWriter::writeContainer(std::string_view name, bool empty, int depth)
{
    if (depth >= propertylist::maximumDepth) {
        return fail(QStringLiteral("The property list is nested too deeply."));
    }
    indent(depth);
    m_xml.append("<").append(name).append(empty ? "/>\n" : ">\n");
    return true;
}

void PropertyListXmlWriter::writeData(const QByteArray &data, int depth)
{
    // Lines end at column 76, a tab being 8 columns wide, but hold at least 12 characters.
    const auto lineSize = 76 - 8 * std::min(depth, 8);
    const auto digits = data.toBase64();
    indent(depth);
    m_xml.append("<data>\n");
    for (auto rest = view(digits); !rest.empty();) {
        const auto line = rest.substr(0, static_cast<std::size_t>(lineSize));
        rest.remove_prefix(line.size());
        indent(depth);
        m_xml.append(line).append("\n");
    }
    indent(depth);
    m_xml.append("</data>\n");
}

void PropertyListXmlWriter::writeElement(std::string_view name, std::string_view content, int depth)
{
    indent(depth);
    m_xml.append("<").append(name).append(">").append(content);
    m_xml.append("</").append(name).append(">\n");
}

void PropertyListXmlWriter::writeText(std::string_view name, const QString &text, int depth)
{
    indent(depth);
    m_xml.append("<").append(name).append(">");
    appendText(text);
    m_xml.append("</").append(name).append(">\n");
}

// XML has no place for most control characters and for halves of surrogate pairs; each becomes
// U+FFFD, as a file that nobody can read would cost more than such a character.
void PropertyListXmlWriter::appendText(const QString &text)
{
    constexpr std::size_t longest = 5; // bytes for one UTF-16 unit: "&amp;"
    const auto start = m_xml.size();
    m_xml.resize(start + static_cast<std::size_t>(text.size()) * longest);
    auto *out = m_xml.data() + start;
    const auto *end = text.utf16() + text.size();
    for (const auto *at = text.utf16(); at != end; ++at) {
        if (isPlain(*at)) {
            *out++ = byte(*at);
        } else if (*at < 0x80) {
            out = putMarkup(out, *at);
        } else if (QChar::isHighSurrogate(*at) && at + 1 != end && QChar::isLowSurrogate(at[1])) {
            out = putCharacter(out, QChar::surrogateToUcs4(at[0], at[1]));
            ++at;
        } else if (QChar::isSurrogate(*at) || *at >= 0xFFFE) {
            out = putCharacter(out, QChar::ReplacementCharacter);
        } else {
            out = putCharacter(out, *at);
        }
    }
    m_xml.resize(static_cast<std::size_t>(out - m_xml.data()));
}

bool PropertyListXmlWriter::fail(const QString &error)
{
    m_error = error;
    return false;
}

} // namespace platform
