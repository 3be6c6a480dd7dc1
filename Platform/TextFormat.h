// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVariant>

#include <initializer_list>
#include <type_traits>
#include <variant>

namespace platform {

// One value handed to formatText(): text, a number or anything that can describe itself.
class FormatArgument {
public:
    using Value = std::variant<QString, const char *, qint64, quint64, double, const void *>;

    FormatArgument(const QString &text) : m_value(text) {} // NOLINT(google-explicit-constructor)
    FormatArgument(const char *text) : m_value(text) {}    // UTF-8
    FormatArgument(const QVariant &value);
    FormatArgument(double number) : m_value(number) {}
    FormatArgument(const void *pointer) : m_value(pointer) {}
    template <typename T, std::enable_if_t<std::is_integral_v<T>, int> = 0>
    FormatArgument(T number) : m_value(widened(number))
    {
    }

    const Value &value() const { return m_value; }

private:
    template <typename T> static Value widened(T number)
    {
        if constexpr (std::is_signed_v<T>) {
            return Value(std::in_place_type<qint64>, number);
        } else {
            return Value(std::in_place_type<quint64>, number);
        }
    }

    Value m_value;
};

// Formats as the C library does, and "%@" for the description of any value. A null text or a
// missing argument prints "(null)"; an argument of another kind than the directive's is converted;
// surplus arguments are ignored; an unknown or unfinished directive stands as it is.
QString formatText(const QString &format, std::initializer_list<FormatArgument> arguments);

template <typename... Arguments> QString format(const QString &text, const Arguments &...arguments)
{
    return formatText(text, {FormatArgument(arguments)...});
}

} // namespace platform
