// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVariant>

#include <cstddef>
#include <initializer_list>
#include <type_traits>

namespace platform {

// One value handed to formatText(). Bytes and a "const char *", which must outlive it, are UTF-8.
class FormatArgument {
public:
    FormatArgument(const QVariant &value) : m_value(value) {}
    FormatArgument(const QByteArray &text) : m_value(QString::fromUtf8(text)) {}
    FormatArgument(const char *text) : m_utf8(text) {}
    FormatArgument(std::nullptr_t) {}
    FormatArgument(char character) : m_value(QChar(QLatin1Char(character))) {}
    FormatArgument(double number) : m_value(number) {}
    FormatArgument(const void *pointer)
        : m_value(QVariant::fromValue(const_cast<void *>(pointer))) // NOLINT(*-const-cast)
    {
    }
    template <typename T, std::enable_if_t<std::is_integral_v<T> || std::is_enum_v<T>, int> = 0>
    FormatArgument(T number)
    {
        if constexpr (std::is_enum_v<T>) {
            *this = FormatArgument(static_cast<std::underlying_type_t<T>>(number));
        } else if constexpr (std::is_signed_v<T>) {
            m_value = static_cast<qlonglong>(number);
        } else {
            m_value = static_cast<qulonglong>(number);
        }
    }

    QVariant value() const { return m_utf8 == nullptr ? m_value : QString::fromUtf8(m_utf8); }

    // Null where it was made of anything but a "const char *".
    const char *utf8() const { return m_utf8; }

private:
    QVariant m_value;
    const char *m_utf8 = nullptr;
};

// Formats as the C library does in the "C" locale, and "%@" for the description of any value. Width
// and precision of text count UTF-16 units, except that the precision of a "const char *" counts
// bytes, as in C. A null text or a missing argument prints "(null)"; an argument of another kind
// than the directive's is converted and, where that is impossible, shown as for "%@"; a whole
// number is never cut to the directive's size, except by "h" and "hh"; surplus arguments are
// ignored; an unknown or unfinished directive stands as it is, and "%n" is unknown. Width and
// precision are limited to 4095, the most that C promises for one directive.
QString formatText(const QString &format, std::initializer_list<FormatArgument> arguments);

template <typename... Arguments>
QString format(const QString &text, const Arguments &...arguments)
{
    return formatText(text, {FormatArgument(arguments)...});
}

// What "%@" prints: text as it is, truth values as 1 or 0, dates as "2012-06-15 14:23:45 +0000",
// lists as "(a, b)", dictionaries as "{key = value; key = value}", data as "<0102ff>" and cut after
// 32 bytes, "(null)" for no value, the type's name for what has no text. One line where the texts
// in it are.
QString description(const QVariant &value);

// In UTC; "(null)" for an invalid date.
QString description(const QDateTime &date);

// The shortest text that reads back as the same number.
QString description(double number);

} // namespace platform
