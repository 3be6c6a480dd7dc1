// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

#include <optional>
#include <string_view>

// Single values between the XML form's text and QVariant. Never depend on the locale.
namespace platform::propertylist {

// Bytes that are not UTF-8 become U+FFFD.
QString textFromUtf8(std::string_view utf8);

// Decimal, or hexadecimal after "0x"; nothing beyond 64 bits, signed or unsigned.
std::optional<QVariant> integerFromText(std::string_view text);

// Also "nan", "inf" and "infinity".
std::optional<double> realFromText(std::string_view text);

// "2026-01-31T23:59:59Z"; years of up to five digits.
std::optional<QDateTime> dateFromText(std::string_view text);

// Base64 with white space anywhere.
std::optional<QByteArray> dataFromText(std::string_view text);

// What realFromText() reads back to the very same number, as short as can be.
QByteArray textFromReal(double real);

// What dateFromText() reads back; fractions of a second are cut off. Empty for a date out
// of range.
QByteArray textFromDate(const QDateTime &date);

} // namespace platform::propertylist
