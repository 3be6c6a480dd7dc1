// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyListFence.h"

#include "Platform/Core/PropertyLists/PropertyListLimits.h"

#include <QDateTime>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>
#include <vector>

namespace platform::propertylist {
namespace {

// A big-endian number.
quint64 number(const char *bytes, quint64 size)
{
    quint64 number = 0;
    for (quint64 i = 0; i < size; ++i) {
        number = number << 8U | static_cast<uchar>(bytes[i]);
    }
    return number;
}

// The binary form is a header of 8 bytes, the objects, a table of their offsets and a trailer of 32
// bytes. Objects refer to one another by number.
class BinaryFence {
public:
    explicit BinaryFence(const QByteArray &data) : m_data(data.constData())
    {
        constexpr quint64 headerSize = 8;
        constexpr quint64 trailerSize = 32;
        const auto size = static_cast<quint64>(data.size());
        if (size < headerSize + trailerSize || !data.startsWith("bplist00")) {
            return;
        }
        const auto tableEnd = size - trailerSize;
        const auto *trailer = m_data + tableEnd;
        m_offsetSize = number(trailer + 6, 1);
        m_referenceSize = number(trailer + 7, 1);
        const auto count = number(trailer + 8, 8);
        m_root = number(trailer + 16, 8);
        m_table = number(trailer + 24, 8);
        if (m_offsetSize >= 1 && m_offsetSize <= 8 && m_referenceSize >= 1 &&
            m_referenceSize <= 8 && m_table < tableEnd &&
            count <= (tableEnd - m_table) / m_offsetSize && count <= quint64(maximumValues)) {
            m_objects.resize(count);
        }
    }

    bool isSafe() { return isSafe(m_root, 0) != nullptr; }

private:
    struct Object {
        quint64 weight = 0; // of this one and all that it holds, unfolded; 0 until it was read
        int height = 0;     // containers inside one another
    };

    // The object, where it is safe inside as many containers. One inside itself never is, as it
    // comes to lie too deep.
    const Object *isSafe(quint64 index, int depth)
    {
        if (index >= m_objects.size()) {
            return nullptr;
        }
        auto &object = m_objects[index];
        const auto safe = object.weight > 0 || read(index, depth, object);
        return safe && depth + object.height <= maximumDepth ? &object : nullptr;
    }

    bool read(quint64 index, int depth, Object &object)
    {
        auto offset = number(m_data + m_table + index * m_offsetSize, m_offsetSize);
        if (!isThere(offset, 1)) {
            return false;
        }
        const auto kind = number(m_data + offset, 1) >> 4U;
        auto count = number(m_data + offset, 1) & 0xFU;
        ++offset;
        const auto counted =
            kind == 0x4 || kind == 0x5 || kind == 0x6 || kind == 0xA || kind == 0xD;
        if (counted && count == 0xF && !readCount(offset, count)) {
            return false;
        }
        if (kind == 0xA || kind == 0xD) {
            return readContainer(offset, count, kind == 0xD ? 2 : 1, depth, object);
        }
        const auto size = (counted ? count : 0) * (kind == 0x6 ? 2 : 1);
        object.weight = valueWeight + size;
        // A set would be a container, too.
        return kind != 0xC && object.weight <= quint64(maximumSize) && isThere(offset, size) &&
               (kind != 0x5 || std::memchr(m_data + offset, 0, size) == nullptr) &&
               (kind != 0x6 || canBeKept(m_data + offset, count));
    }

    // Of UTF-16 the library drops halves of surrogate pairs, and cuts a text at a zero; for one in
    // a key it gives up the whole program.
    static bool canBeKept(const char *units, quint64 count)
    {
        auto isHalf = false;
        for (quint64 i = 0; i < count; ++i) {
            const auto unit = static_cast<char16_t>(number(units + 2 * i, 2));
            if (unit == 0 || isHalf != QChar::isLowSurrogate(unit)) {
                return false;
            }
            isHalf = QChar::isHighSurrogate(unit);
        }
        return !isHalf;
    }

    // A count of 15 and more stands in an integer behind the marker.
    bool readCount(quint64 &offset, quint64 &count) const
    {
        const auto marker = isThere(offset, 1) ? number(m_data + offset, 1) : 0;
        const auto size = quint64(1) << (marker & 3U);
        if (marker < 0x10 || marker > 0x13 || !isThere(offset + 1, size)) {
            return false;
        }
        count = number(m_data + offset + 1, size);
        offset += 1 + size;
        return count <= quint64(maximumSize);
    }

    bool readContainer(quint64 offset, quint64 count, quint64 perItem, int depth, Object &object)
    {
        if (depth >= maximumDepth || !isThere(offset, count * perItem * m_referenceSize)) {
            return false;
        }
        quint64 weight = valueWeight;
        for (quint64 i = 0; i < count * perItem; ++i) {
            const auto *item =
                isSafe(number(m_data + offset + i * m_referenceSize, m_referenceSize), depth + 1);
            weight += item == nullptr ? 0 : item->weight;
            if (item == nullptr || weight > quint64(maximumSize)) {
                return false;
            }
            object.height = std::max(object.height, item->height);
        }
        ++object.height;
        object.weight = weight;
        return true;
    }

    bool isThere(quint64 offset, quint64 size) const
    {
        return offset >= 8 && offset <= m_table && size <= m_table - offset;
    }

    const char *m_data;
    quint64 m_offsetSize = 0;
    quint64 m_referenceSize = 0;
    quint64 m_root = 0;
    quint64 m_table = 0;
    std::vector<Object> m_objects;
};

std::string_view trimmed(std::string_view text)
{
    constexpr auto space = " \t\r\n";
    const auto begin = std::min(text.find_first_not_of(space), text.size());
    return text.substr(begin, text.find_last_not_of(space) + 1 - begin);
}

// Of other dates the library makes ones that were not meant.
bool isDate(std::string_view text)
{
    constexpr std::string_view form = "0000-00-00T00:00:00Z";
    const auto fits = [](char wanted, char is) {
        return wanted == '0' ? is >= '0' && is <= '9' : is == wanted;
    };
    if (!std::equal(form.begin(), form.end(), text.begin(), text.end(), fits)) {
        return false;
    }
    const auto part = [text](std::size_t at, std::size_t size) {
        auto value = 0;
        std::from_chars(text.data() + at, text.data() + at + size, value);
        return value;
    };
    const auto year = part(0, 4) == 0 ? -1 : part(0, 4); // as Qt calls it
    return QDate::isValid(year, part(5, 2), part(8, 2)) &&
           QTime::isValid(part(11, 2), part(14, 2), part(17, 2));
}

// Of larger integers the library makes others.
bool hasAtMost64Bits(std::string_view text)
{
    const auto isNegative = text.substr(0, 1) == "-";
    text.remove_prefix(isNegative || text.substr(0, 1) == "+" ? 1 : 0);
    const auto isHex = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
    text.remove_prefix(isHex ? 2 : 0);
    quint64 magnitude = 0;
    const auto result =
        std::from_chars(text.data(), text.data() + text.size(), magnitude, isHex ? 16 : 10);
    return result.ec != std::errc::result_out_of_range &&
           (!isNegative || magnitude <= quint64(1) << 63U);
}

// Whether the library makes of an element what is meant.
bool isUnderstood(std::string_view tag, std::string_view text)
{
    const auto name = tag.substr(0, tag.find_first_of(" \t\r\n/"));
    return name == "date"      ? isDate(trimmed(text))
           : name == "integer" ? hasAtMost64Bits(trimmed(text))
                               : true;
}

} // namespace

bool isSafeXml(const QByteArray &utf8)
{
    constexpr auto none = std::string_view::npos;
    const std::string_view text(utf8.constData(), static_cast<std::size_t>(utf8.size()));
    auto depth = 0;
    qint64 tags = 0;
    auto at = text.find_first_not_of(" \t\r\n");
    if (at == none || text[at] != '<') {
        return false;
    }
    for (; at != none; at = text.find('<', at)) {
        const auto starts = [&](std::string_view what) {
            return text.substr(at, what.size()) == what;
        };
        const auto comment = starts("<!--");
        if (comment || starts("<![CDATA[")) {
            const auto end = comment ? text.find("-->", at + 4) : text.find("]]>", at + 9);
            if (end == none) {
                return false;
            }
            at = end + 3;
            continue;
        }
        const auto end = text.find('>', at);
        if (end == none) {
            return false;
        }
        const auto tag = text.substr(at + 1, end - at - 1);
        const auto instruction = starts("<?");
        if (tag.find_first_of("<[") != none || std::count(tag.begin(), tag.end(), '"') % 2 != 0 ||
            (instruction && tag.back() != '?') || (starts("<!") && !starts("<!DOCTYPE"))) {
            return false;
        }
        if (starts("</")) {
            --depth;
        } else if (!instruction && !starts("<!") &&
                   tag.substr(std::max(tag.size(), std::size_t(1)) - 1) != "/") {
            ++depth;
        }
        if (!isUnderstood(tag, text.substr(end + 1, text.find('<', end) - end - 1))) {
            return false;
        }
        at = end;
        // Beside the containers, the plist element and one with text.
        if (depth < 0 || depth > maximumDepth + 2 || ++tags > 4 * maximumValues) {
            return false;
        }
    }
    return depth == 0;
}

bool isSafeBinary(const QByteArray &data)
{
    return BinaryFence(data).isSafe();
}

} // namespace platform::propertylist
