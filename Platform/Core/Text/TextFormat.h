// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVariant>

#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <variant>

namespace platform {

// One value handed to formatText(). Refers to the value it was made from and must not outlive it;
// it is meant to live in a call's argument list only.
class FormatArgument {
public:
    using Value = std::variant<const QString *, const QByteArray *, const char *, const QVariant *,
                               qint64, quint64, QChar, double, const void *>;

    FormatArgument(const QString &text) : m_value(&text) {}
    FormatArgument(const QByteArray &text) : m_value(&text) {} // UTF-8
    FormatArgument(const char *text) : m_value(text) {}        // UTF-8
    FormatArgument(std::nullptr_t) : m_value(static_cast<const char *>(nullptr)) {}
    FormatArgument(const QVariant &value) : m_value(&value) {}
    FormatArgument(QChar character) : m_value(character) {}
    FormatArgument(char character) : m_value(QChar(QLatin1Char(character))) {}
    FormatArgument(double number) : m_value(number) {}
    FormatArgument(const void *pointer) : m_value(pointer) {}
    template <typename T, std::enable_if_t<std::is_integral_v<T> || std::is_enum_v<T>, int> = 0>
    FormatArgument(T number) : m_value(widened(number))
    {
    }

    const Value &value() const { return m_value; }

private:
    template <typename T>
    static Value widened(T number)
    {
        if constexpr (std::is_enum_v<T>) {
            return widened(static_cast<std::underlying_type_t<T>>(number));
        } else if constexpr (std::is_signed_v<T>) {
            return Value(std::in_place_type<qint64>, number);
        } else {
            return Value(std::in_place_type<quint64>, number);
        }
    }

    Value m_value;
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
