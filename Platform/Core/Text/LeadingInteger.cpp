// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/LeadingInteger.h"

#include <QMetaType>

#include <cstdlib>

namespace platform {

qlonglong leadingInteger(const QString &text)
{
    // White space as Unicode knows it, which strtoll would not skip.
    qsizetype begin = 0;
    while (begin < text.size() && text.at(static_cast<int>(begin)).isSpace()) {
        ++begin;
    }
    return std::strtoll(text.mid(static_cast<int>(begin)).toLatin1().constData(), nullptr, 10);
}

qlonglong leadingInteger(const QVariant &value)
{
    constexpr auto digits = 17; // so that nothing below 1 rounds up to it
    switch (value.userType()) {
    case QMetaType::Bool:
        return value.toBool() ? 1 : 0;
    case QMetaType::Double:
        return leadingInteger(QString::number(value.toDouble(), 'f', digits));
    case QMetaType::QString:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::UShort:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return leadingInteger(value.toString());
    default:
        return 0;
    }
}

} // namespace platform
