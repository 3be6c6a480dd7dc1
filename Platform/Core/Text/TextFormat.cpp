// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/TextFormat.h"

#include "Platform/Core/Text/CLocale.h"

#include <QStringView>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace platform {
namespace {

// Limit of width and precision: the most characters that C promises for one directive.
constexpr int maxWidth = 4095;

// Units that a line's arguments add to its format, mostly.
constexpr int usualGrowth = 64;

// "%", flags, width, "." and precision, length, conversion.
struct Directive {
    std::string flags;
    int width = 0;
    int precision = -1; // none
    std::string length;
    char conversion = 0;

    bool isBare() const { return flags.empty() && width == 0 && precision < 0; }
};

struct WholeNumber {
    quint64 bits = 0; // two's complement
    bool isNegative = false;
};

// A number cut to a whole one, a character's code, a pointer's address or the number that a text
// reads as; nothing where that does not fit into 64 bits.
std::optional<WholeNumber> wholeNumberOf(const QVariant &value)
{
    constexpr double two63 = 9223372036854775808.0;
    const auto type = value.userType();
    bool isNumber = true;
    if (type == QMetaType::VoidStar) {
        return WholeNumber{reinterpret_cast<quintptr>(value.value<void *>())}; // NOLINT(*-cast)
    }
    if (type == QMetaType::Double || type == QMetaType::Float) {
        const auto real = std::trunc(value.toDouble());
        if (!(real >= -two63 && real < 2 * two63)) {
            return std::nullopt;
        }
        return WholeNumber{real < 0 ? static_cast<quint64>(static_cast<qint64>(real))
                                    : static_cast<quint64>(real),
                           real < 0};
    }
    if (type != QMetaType::ULongLong && type != QMetaType::ULong) {
        const auto number = value.toLongLong(&isNumber);
        if (isNumber) {
            return WholeNumber{static_cast<quint64>(number), number < 0};
        }
    }
    const auto number = value.toULongLong(&isNumber);
    return isNumber ? std::optional(WholeNumber{number}) : std::nullopt;
}

template <typename Number>
QString printed(const Directive &directive, const char *length, Number number)
{
    const auto pattern = '%' + directive.flags + "*.*" + length + directive.conversion;
    // Sign, 309 digits, point and decimals.
    std::array<char, maxWidth + 320> text; // NOLINT(*-member-init)
    const CLocale cLocale;
    const auto size = std::snprintf(text.data(), text.size(), pattern.c_str(), directive.width,
                                    directive.precision, number);
    return QString::fromLatin1(text.data(), size);
}

// Filled up with spaces to the directive's width.
QString aligned(const Directive &directive, const QString &text)
{
    return directive.flags.find('-') == std::string::npos ? text.rightJustified(directive.width)
                                                          : text.leftJustified(directive.width);
}

std::optional<QString> wholeNumberText(Directive directive, const QVariant &value)
{
    auto number = wholeNumberOf(value);
    if (!number) {
        return std::nullopt;
    }
    if (directive.conversion == 'p') {
        return aligned(directive, QStringLiteral("0x") + QString::number(number->bits, 16));
    }
    const auto shortModifiers = std::count(directive.length.begin(), directive.length.end(), 'h');
    if (shortModifiers > 0) {
        return printed(directive, shortModifiers > 1 ? "hh" : "h", static_cast<int>(number->bits));
    }
    const bool isSigned = directive.conversion == 'd' || directive.conversion == 'i';
    const auto bits = static_cast<qint64>(number->bits);
    if (isSigned && (number->isNegative || bits >= 0) && directive.isBare()) {
        return QString::number(bits); // as C prints it, in a tenth of the time
    }
    if (isSigned && !number->isNegative && bits < 0) {
        directive.conversion = 'u'; // beyond what is signed in C
    }
    if (!isSigned && number->isNegative && bits >= INT_MIN && directive.length.empty()) {
        return printed(directive, "", static_cast<unsigned>(bits)); // an int in C
    }
    return printed(directive, "j", bits);
}

std::optional<QString> realText(const Directive &directive, const QVariant &value)
{
    bool isNumber = false;
    const auto number = value.toDouble(&isNumber);
    return isNumber ? std::optional(printed(directive, "", number)) : std::nullopt;
}

std::optional<QString> characterText(const Directive &directive, const QVariant &value)
{
    const auto number =
        value.userType() == QMetaType::QString ? std::nullopt : wholeNumberOf(value);
    if (!number || number->bits > QChar::LastValidCodePoint) {
        return std::nullopt;
    }
    const auto code = static_cast<char32_t>(number->bits);
    return aligned(directive, QString::fromUcs4(&code, 1));
}

QString textOf(const FormatArgument &argument, int precision)
{
    const auto *const utf8 = argument.utf8();
    if (utf8 != nullptr && precision >= 0) {
        // The precision may stand for a missing NUL, as in C, and may fall into a character.
        const auto size = ::strnlen(utf8, static_cast<std::size_t>(precision));
        auto text = QString::fromUtf8(utf8, static_cast<int>(size));
        text.chop(text.endsWith(QChar::ReplacementCharacter) ? 1 : 0);
        return text;
    }
    auto text = description(argument.value());
    if (precision >= 0 && precision < text.size()) {
        const bool splitsPair = precision > 0 && text.at(precision - 1).isHighSurrogate();
        text.truncate(splitsPair ? precision - 1 : precision);
    }
    return text;
}

class Formatter {
public:
    Formatter(QStringView format, std::initializer_list<FormatArgument> arguments)
        : m_format(format), m_next(arguments.begin()), m_end(arguments.end())
    {
    }

    QString text();

private:
    bool parse(Directive &directive);
    bool skip(char character);
    std::string take(std::string_view characters);
    int takeNumber();
    QString convertNext(const Directive &directive);

    QStringView m_format;
    qsizetype m_position = 0;
    const FormatArgument *m_next;
    const FormatArgument *m_end;
};

QString Formatter::text()
{
    QString text;
    text.reserve(static_cast<int>(m_format.size()) + usualGrowth);
    for (;;) {
        const auto percent = m_format.indexOf(u'%', m_position);
        text += m_format.mid(m_position, percent < 0 ? -1 : percent - m_position);
        if (percent < 0) {
            return text;
        }
        m_position = percent + 1;
        const auto *const next = m_next;
        Directive directive;
        if (skip('%')) {
            text += u'%';
        } else if (m_next != m_end && skip('@')) { // most directives of log lines
            text += description((m_next++)->value());
        } else if (parse(directive)) {
            text += convertNext(directive);
        } else {
            m_next = next;
            text += m_format.mid(percent, m_position - percent);
        }
    }
}

// False where the directive is unknown or unfinished. What stands at the position then is no part
// of it.
bool Formatter::parse(Directive &directive)
{
    directive.flags = take("-+ #0'");
    directive.width = takeNumber();
    if (directive.width < 0) {
        directive.width = -directive.width;
        directive.flags += '-';
    }
    if (skip('.')) {
        directive.precision = std::max(-1, takeNumber());
    }
    directive.length = take("lhzqLjt");
    constexpr std::string_view conversions = "@sdiuoxXfFeEgGaAcp";
    const auto conversion =
        std::find_if(conversions.begin(), conversions.end(), [this](char c) { return skip(c); });
    directive.conversion = conversion == conversions.end() ? '\0' : *conversion;
    return conversion != conversions.end();
}

bool Formatter::skip(char character)
{
    if (m_position == m_format.size() || m_format[m_position] != QLatin1Char(character)) {
        return false;
    }
    ++m_position;
    return true;
}

// The next characters of the format that are among these.
std::string Formatter::take(std::string_view characters)
{
    std::string taken;
    for (; m_position < m_format.size(); ++m_position) {
        const auto character = m_format[m_position].toLatin1(); // NUL where it is not
        if (characters.find(character) == std::string_view::npos) {
            break;
        }
        taken += character;
    }
    return taken;
}

// A width or a precision: digits, none of which is 0, or "*" for the next argument, of which 0 is
// made where it is no number or there is none.
int Formatter::takeNumber()
{
    if (!skip('*')) {
        const auto number = std::strtol(take("0123456789").c_str(), nullptr, 10);
        return static_cast<int>(std::min<long>(number, maxWidth));
    }
    const auto number = m_next == m_end ? std::nullopt : wholeNumberOf((m_next++)->value());
    const auto [bits, isNegative] = number.value_or(WholeNumber());
    const auto size = static_cast<int>(std::min<quint64>(isNegative ? 0 - bits : bits, maxWidth));
    return isNegative ? -size : size;
}

QString Formatter::convertNext(const Directive &directive)
{
    if (m_next == m_end) {
        return QStringLiteral("(null)");
    }
    const auto &argument = *m_next++;
    std::optional<QString> text;
    switch (directive.conversion) {
    case '@':
    case 's':
        return aligned(directive, textOf(argument, directive.precision));
    case 'c':
        text = characterText(directive, argument.value());
        break;
    case 'd':
    case 'i':
    case 'u':
    case 'o':
    case 'x':
    case 'X':
    case 'p':
        text = wholeNumberText(directive, argument.value());
        break;
    default:
        text = realText(directive, argument.value());
    }
    return text ? *text : aligned(directive, textOf(argument, -1));
}

} // namespace

QString formatText(const QString &format, std::initializer_list<FormatArgument> arguments)
{
    return format.contains(u'%') ? Formatter(format, arguments).text() : format;
}

} // namespace platform
