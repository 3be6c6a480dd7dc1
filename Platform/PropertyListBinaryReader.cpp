// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PropertyListBinaryReader.h"

#include "Platform/PropertyListLimits.h"

#include <QDateTime>
#include <QtEndian>

#include <cmath>
#include <cstring>

namespace platform {
namespace {

using Layout = PropertyListBinaryLayout;

template <typename Number, typename Bits>
Number numberOfBits(const char *bytes)
{
    const auto bits = qFromBigEndian<Bits>(bytes);
    Number number = 0;
    static_assert(sizeof number == sizeof bits);
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

QVariant fromUnsigned(quint64 number)
{
    const auto fits = number <= static_cast<quint64>(std::numeric_limits<qint64>::max());
    return fits ? QVariant(static_cast<qint64>(number)) : QVariant(number);
}

// Up to 4 bytes are unsigned, 8 bytes signed; 16 bytes are for what 8 cannot hold.
std::optional<QVariant> integerFrom(const char *bytes, quint64 size)
{
    if (size <= 8) {
        return QVariant(static_cast<qint64>(Layout::number(bytes, size)));
    }
    const auto high = Layout::number(bytes, 8);
    const auto low = Layout::number(bytes + 8, 8);
    if (high == 0) {
        return fromUnsigned(low);
    }
    const auto negative = static_cast<qint64>(low);
    return ~high == 0 && negative < 0 ? std::optional(QVariant(negative)) : std::nullopt;
}

// Seconds since 2001. A null where the date is out of range, as the XML form cannot hold it.
QVariant dateFrom(double time)
{
    constexpr qint64 secondsFrom1970To2001 = 978307200;
    constexpr double longest = 1e13; // beyond any year in range, but not beyond QDateTime
    const auto seconds = std::floor(time);
    if (!(std::abs(seconds) < longest)) { // written so that it is also true for nan
        return {};
    }
    const auto date = QDateTime::fromSecsSinceEpoch(
        static_cast<qint64>(seconds) + secondsFrom1970To2001, Qt::UTC);
    const auto year = date.date().year();
    return year >= propertylist::earliestYear && year <= propertylist::latestYear ? QVariant(date)
                                                                                  : QVariant();
}

} // namespace

std::optional<QVariant> PropertyListBinaryReader::read()
{
    if (!m_layout.isSound()) {
        return std::nullopt;
    }
    m_objects.resize(m_layout.objectCount());
    const auto *root = object(m_layout.rootNumber(), 1);
    return root == nullptr ? std::nullopt : std::optional(root->value);
}

const PropertyListBinaryReader::Object *PropertyListBinaryReader::object(quint64 number, int depth)
{
    if (number >= m_objects.size()) {
        return nullptr;
    }
    auto &object = m_objects[number];
    if (object.state == State::Unread) {
        object.state = State::BeingRead;
        if (!readObject(m_layout.objectOffset(number), depth, object)) {
            return nullptr;
        }
        object.state = State::Read;
    }
    // One that is still being read was met again inside itself.
    const auto good =
        object.state == State::Read && depth + object.height - 1 <= propertylist::maximumDepth;
    return good ? &object : nullptr;
}

bool PropertyListBinaryReader::readObject(quint64 offset, int depth, Object &object)
{
    const auto *marker = m_layout.bytes(offset, 1);
    if (marker == nullptr) {
        return false;
    }
    const auto kind = Layout::number(marker, 1) >> 4U;
    auto count = Layout::number(marker, 1) & 0xFU;
    ++offset;
    const auto counted = kind == 0x4 || kind == 0x5 || kind == 0x6 || kind == 0xA || kind == 0xD;
    if (counted && count == 0xF && !readCount(offset, count)) {
        return false;
    }
    switch (kind) {
    case 0x0:
        if (count == 8 || count == 9) {
            object.value = count == 9;
        }
        return count == 0 || count == 8 || count == 9;
    case 0xA:
        return readArray(offset, count, depth, object);
    case 0xD:
        return readDictionary(offset, count, depth, object);
    default:
        return readContent(kind, offset, count, object.value);
    }
}

// A count of 15 and more stands in an integer behind the marker.
bool PropertyListBinaryReader::readCount(quint64 &offset, quint64 &count) const
{
    const auto *marker = m_layout.bytes(offset, 1);
    if (marker == nullptr || (Layout::number(marker, 1) & ~quint64(3)) != 0x10) {
        return false;
    }
    const auto size = quint64(1) << (Layout::number(marker, 1) & 3U);
    const auto *number = m_layout.bytes(offset + 1, size);
    if (number == nullptr) {
        return false;
    }
    count = Layout::number(number, size);
    offset += 1 + size;
    return true;
}

bool PropertyListBinaryReader::readContent(quint64 kind, quint64 offset, quint64 count,
                                           QVariant &value)
{
    // The low half of a marker is the exponent of the size for numbers, and the size less 1 of a
    // UID.
    const auto numeric = kind == 0x1 || kind == 0x2 || kind == 0x3;
    const auto pieces = numeric ? quint64(1) << count : kind == 0x8 ? count + 1 : count;
    const auto *content = m_layout.content(offset, pieces, kind == 0x6 ? 2 : 1);
    if (content == nullptr) {
        return false;
    }
    const auto size = static_cast<int>(pieces);
    switch (kind) {
    case 0x1: {
        const auto integer = pieces <= 16 ? integerFrom(content, pieces) : std::nullopt;
        value = integer.value_or(QVariant());
        return integer.has_value();
    }
    case 0x2:
        value = pieces == 4   ? double(numberOfBits<float, quint32>(content))
                : pieces == 8 ? numberOfBits<double, quint64>(content)
                              : 0;
        return pieces == 4 || pieces == 8;
    case 0x3:
        value = pieces == 8 ? dateFrom(numberOfBits<double, quint64>(content)) : QVariant();
        return pieces == 8;
    case 0x4:
        value = QByteArray(content, size);
        return true;
    case 0x5:
        value = QString::fromLatin1(content, size);
        return true;
    case 0x6: {
        QString text(size, Qt::Uninitialized);
        qFromBigEndian<quint16>(content, size, text.data());
        value = text;
        return true;
    }
    case 0x8:
        value =
            QVariantMap{{QStringLiteral("CF$UID"), fromUnsigned(Layout::number(content, pieces))}};
        return pieces <= 8;
    default:
        return false;
    }
}

bool PropertyListBinaryReader::readArray(quint64 offset, quint64 count, int depth, Object &object)
{
    const auto *items = references(offset, count, 1, depth);
    if (items == nullptr) {
        return false;
    }
    QVariantList array;
    array.reserve(static_cast<int>(count));
    object.height = 1;
    for (quint64 i = 0; i < count; ++i) {
        const auto *item = referredObject(items, i, depth, object);
        if (item == nullptr) {
            return false;
        }
        array.append(item->value);
    }
    object.value = array;
    return true;
}

bool PropertyListBinaryReader::readDictionary(quint64 offset, quint64 count, int depth,
                                              Object &object)
{
    const auto *items = references(offset, count, 2, depth); // all keys, then all values
    if (items == nullptr) {
        return false;
    }
    QVariantMap dictionary;
    object.height = 1;
    for (quint64 i = 0; i < count; ++i) {
        const auto *key = referredObject(items, i, depth, object);
        const auto *item = referredObject(items, count + i, depth, object);
        if (key == nullptr || item == nullptr || key->value.userType() != QMetaType::QString) {
            return false;
        }
        dictionary.insert(dictionary.cend(), key->value.toString(), item->value);
    }
    object.value = dictionary;
    return true;
}

// The references in a container at a depth; null where there cannot be such a container.
const char *PropertyListBinaryReader::references(quint64 offset, quint64 count, quint64 perItem,
                                                 int depth)
{
    const auto fits = depth <= propertylist::maximumDepth &&
                      count <= static_cast<quint64>(propertylist::maximumValues);
    return fits ? m_layout.content(offset, count, perItem * m_layout.referenceSize()) : nullptr;
}

const PropertyListBinaryReader::Object *
PropertyListBinaryReader::referredObject(const char *references, quint64 index, int depth,
                                         Object &holder)
{
    const auto size = m_layout.referenceSize();
    const auto *item = object(Layout::number(references + index * size, size), depth + 1);
    if (item == nullptr) {
        return nullptr;
    }
    holder.values += item->values;
    holder.height = std::max(holder.height, item->height + 1);
    return holder.values <= propertylist::maximumValues ? item : nullptr;
}

} // namespace platform
