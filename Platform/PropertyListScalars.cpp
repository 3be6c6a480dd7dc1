// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PropertyListScalars.h"

#include "Platform/PropertyListLimits.h"

#include <QDateTime>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace platform::propertylist {
namespace {

// The whole text as a number.
template <typename Number, typename... Format>
bool parse(std::string_view text, Number &number, Format... format)
{
    const auto *end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, format...);
    return result.ec == std::errc() && result.ptr == end;
}

// Digits only, unlike parse().
bool parseDigits(std::string_view text, int &number)
{
    return text.substr(0, 1) != "-" && parse(text, number);
}

bool isInRange(const QDate &day)
{
    return day.year() >= earliestYear && day.year() <= latestYear;
}

} // namespace

QString textFromUtf8(std::string_view utf8)
{
    // Qt takes a first U+FEFF for a byte order mark and drops it; here it is a character.
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    QString marks;
    while (utf8.substr(0, mark.size()) == mark) {
        marks += QChar(0xFEFF);
        utf8.remove_prefix(mark.size());
    }
    // Without bytes Qt makes a null text, which is another thing than an empty one.
    auto text = utf8.empty() ? QString(QLatin1String(""))
                             : QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
    return marks.isEmpty() ? text : marks + text;
}

std::optional<QVariant> integerFromText(std::string_view text)
{
    const auto negative = text.substr(0, 1) == "-";
    if (negative || text.substr(0, 1) == "+") {
        text.remove_prefix(1);
    }
    const auto hexadecimal = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
    quint64 number = 0;
    if (!parse(text.substr(hexadecimal ? 2 : 0), number, hexadecimal ? 16 : 10)) {
        return std::nullopt;
    }
    constexpr auto largest = static_cast<quint64>(std::numeric_limits<qint64>::max());
    if (!negative) {
        return number <= largest ? QVariant(static_cast<qint64>(number)) : QVariant(number);
    }
    if (number > largest + 1) {
        return std::nullopt;
    }
    return QVariant(static_cast<qint64>(0 - number)); // unsigned: also right for the least number
}

std::optional<double> realFromText(std::string_view text)
{
    if (text.substr(0, 1) == "+" && text.substr(1, 1) != "-") {
        text.remove_prefix(1);
    }
    double real = 0;
    return parse(text, real, std::chars_format::general) ? std::optional(real) : std::nullopt;
}

std::optional<QDateTime> dateFromText(std::string_view text)
{
    constexpr std::string_view form = "-00-00T00:00:00Z"; // what follows the year
    if (text.size() <= form.size()) {
        return std::nullopt;
    }
    const auto yearSize = text.size() - form.size();
    const auto rest = text.substr(yearSize);
    for (std::size_t i = 0; i < form.size(); ++i) {
        if (form[i] != '0' && form[i] != rest[i]) {
            return std::nullopt;
        }
    }
    std::array<int, 6> numbers{};
    if (!parseDigits(text.substr(0, yearSize), numbers[0])) {
        return std::nullopt;
    }
    for (std::size_t i = 1; i < numbers.size(); ++i) {
        if (!parseDigits(rest.substr(i * 3 - 2, 2), numbers[i])) {
            return std::nullopt;
        }
    }
    const QDate day(numbers[0], numbers[1], numbers[2]);
    const QTime time(numbers[3], numbers[4], numbers[5]);
    return day.isValid() && isInRange(day) && time.isValid()
               ? std::optional(QDateTime(day, time, Qt::UTC))
               : std::nullopt;
}

std::optional<QByteArray> dataFromText(std::string_view text)
{
    QByteArray digits;
    digits.reserve(static_cast<int>(text.size()));
    for (const auto c : text) {
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n') {
            digits.append(c);
        }
    }
    const auto data =
        QByteArray::fromBase64Encoding(digits, QByteArray::AbortOnBase64DecodingErrors);
    return data ? std::optional(*data) : std::nullopt;
}

QByteArray textFromReal(double real)
{
    if (std::isnan(real)) {
        return QByteArrayLiteral("nan");
    }
    if (std::isinf(real)) {
        return real > 0 ? QByteArrayLiteral("+infinity") : QByteArrayLiteral("-infinity");
    }
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), real);
    return {text.data(), static_cast<int>(result.ptr - text.data())};
}

QByteArray textFromDate(const QDateTime &date)
{
    const auto utc = date.toUTC();
    if (!utc.isValid() || !isInRange(utc.date())) {
        return {};
    }
    return QByteArray::number(utc.date().year()).rightJustified(4, '0') +
           utc.toString(QStringLiteral("-MM-ddTHH:mm:ssZ")).toLatin1();
}

} // namespace platform::propertylist
