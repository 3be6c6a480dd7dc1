// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PropertyListBinaryLayout.h"

#include "Platform/PropertyListLimits.h"

namespace platform {

PropertyListBinaryLayout::PropertyListBinaryLayout(const QByteArray &data) : m_data(data)
{
    constexpr quint64 headerSize = 8;
    constexpr quint64 trailerSize = 32;
    const auto size = static_cast<quint64>(data.size());
    if (size < headerSize + trailerSize || !data.startsWith("bplist0")) {
        return;
    }
    m_end = size - trailerSize;
    const auto *trailer = data.constData() + m_end;
    m_offsetSize = number(trailer + 6, 1);
    m_referenceSize = number(trailer + 7, 1);
    m_count = number(trailer + 8, 8);
    m_root = number(trailer + 16, 8);
    m_table = number(trailer + 24, 8);
    m_sound = m_offsetSize >= 1 && m_offsetSize <= 8 && m_referenceSize >= 1 &&
              m_referenceSize <= 8 && m_table < m_end &&
              m_count <= (m_end - m_table) / m_offsetSize &&
              m_count <= static_cast<quint64>(propertylist::maximumValues);
}

quint64 PropertyListBinaryLayout::number(const char *bytes, quint64 size)
{
    quint64 number = 0;
    for (quint64 i = 0; i < size; ++i) {
        number = number << 8U | static_cast<uchar>(bytes[i]);
    }
    return number;
}

quint64 PropertyListBinaryLayout::objectOffset(quint64 number) const
{
    return PropertyListBinaryLayout::number(m_data.constData() + m_table + number * m_offsetSize,
                                            m_offsetSize);
}

const char *PropertyListBinaryLayout::bytes(quint64 offset, quint64 count) const
{
    return offset <= m_end && count <= m_end - offset ? m_data.constData() + offset : nullptr;
}

const char *PropertyListBinaryLayout::content(quint64 offset, quint64 count, quint64 size)
{
    if (count > m_end / size) {
        return nullptr;
    }
    m_contentSize += count * size;
    return m_contentSize <= m_end ? bytes(offset, count * size) : nullptr;
}

} // namespace platform
