// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/TextFormat.h"

#include "Platform/Core/Text/FormatDirective.h"
#include "Platform/Core/Text/FormatValue.h"

#include <QStringView>
#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace platform {
namespace {

using Value = FormatArgument::Value;

bool isSigned(char16_t conversion)
{
    return conversion == u'd' || conversion == u'i';
}

// The number as C shows it under this directive.
WholeNumber fitted(const WholeNumber &number, const FormatDirective &directive)
{
    const auto bits = number.negative ? 0 - number.magnitude : number.magnitude;
    if (directive.shortness > 0) {
        const quint64 top = directive.shortness > 1 ? 0x80 : 0x8000;
        const auto low = bits & (2 * top - 1);
        const bool negative = isSigned(directive.conversion) && (low & top) != 0;
        return {negative ? 2 * top - low : low, negative};
    }
    if (!number.negative || isSigned(directive.conversion)) {
        return number;
    }
    // Two's complement: in 32 bits where the number was an int in C.
    const bool isInt = !directive.isLong && number.magnitude <= 0x80000000U;
    return {isInt ? bits & 0xFFFFFFFFU : bits, false};
}

// The digits before end; where they begin. None for 0.
char16_t *writeDigits(char16_t *end, quint64 number, char16_t conversion)
{
    if (conversion == u'o') {
        for (; number != 0; number >>= 3U) {
            *--end = static_cast<char16_t>(u'0' + (number & 7U));
        }
    } else if (conversion == u'x' || conversion == u'X' || conversion == u'p') {
        const auto *const digits = conversion == u'X' ? u"0123456789ABCDEF" : u"0123456789abcdef";
        for (; number != 0; number >>= 4U) {
            *--end = digits[number & 15U];
        }
    } else {
        for (; number != 0; number /= 10) {
            *--end = static_cast<char16_t>(u'0' + number % 10);
        }
    }
    return end;
}

bool isText(const Value &value)
{
    return std::holds_alternative<const QString *>(value) ||
           std::holds_alternative<const char *>(value) ||
           std::holds_alternative<const QByteArray *>(value);
}

// One pass over the format; the text grows on the stack and is allocated once, at the end.
class Formatter {
public:
    Formatter(QStringView format, std::initializer_list<FormatArgument> arguments)
        : m_format(format), m_next(arguments.begin()), m_end(arguments.end())
    {
    }

    QString text();

private:
    void resolve(FormatDirective &directive);
    int nextNumber();

    void convertNext(FormatDirective &directive);
    void convert(const FormatDirective &directive, const Value &value);
    bool convertWholeNumber(const FormatDirective &directive, const Value &value);
    bool convertReal(const FormatDirective &directive, const Value &value);
    bool convertCharacter(const FormatDirective &directive, const Value &value);
    void convertText(const FormatDirective &directive, const Value &value);

    void append(QStringView text);
    void appendTimes(char16_t character, int times);
    void appendField(const FormatDirective &directive, QStringView prefix, int zeros,
                     QStringView body);
    void appendText(const FormatDirective &directive, const QString &text);
    void appendBytes(const FormatDirective &directive, std::string_view bytes);

    QStringView m_format;
    const FormatArgument *m_next;
    const FormatArgument *m_end;
    QVarLengthArray<char16_t, 512> m_output;
};

QString Formatter::text()
{
    qsizetype position = 0;
    for (;;) {
        const auto percent = m_format.indexOf(u'%', position);
        if (percent < 0) {
            append(m_format.mid(position));
            break;
        }
        append(m_format.mid(position, percent - position));
        FormatDirective directive;
        position = parseDirective(m_format, percent + 1, directive);
        if (directive.conversion == u'%') {
            append(u"%");
        } else if (directive.conversion == 0) {
            append(m_format.mid(percent, position - percent));
        } else {
            convertNext(directive);
        }
    }
    return QString(reinterpret_cast<const QChar *>(m_output.constData()), m_output.size());
}

// Takes the arguments for a width and a precision of "*".
void Formatter::resolve(FormatDirective &directive)
{
    if (directive.widthIsArgument) {
        directive.width = nextNumber();
        directive.left = directive.left || directive.width < 0;
        directive.width = std::abs(directive.width);
    }
    if (directive.precisionIsArgument) {
        directive.precision = std::max(-1, nextNumber());
    }
}

// The next argument within the limits of a width; 0 where it is no number or there is none.
int Formatter::nextNumber()
{
    const auto number =
        m_next == m_end ? std::nullopt : wholeNumberOf(unwrapped((m_next++)->value()));
    if (!number) {
        return 0;
    }
    const auto magnitude = static_cast<int>(std::min<quint64>(number->magnitude, mostFormatWidth));
    return number->negative ? -magnitude : magnitude;
}

void Formatter::convertNext(FormatDirective &directive)
{
    resolve(directive);
    if (m_next == m_end) {
        append(u"(null)");
        return;
    }
    convert(directive, unwrapped((m_next++)->value()));
}

void Formatter::convert(const FormatDirective &directive, const Value &value)
{
    bool done = false;
    switch (directive.conversion) {
    case u'@':
    case u's':
        convertText(directive, value);
        return;
    case u'c':
        done = convertCharacter(directive, value);
        break;
    case u'd':
    case u'i':
    case u'u':
    case u'o':
    case u'x':
    case u'X':
    case u'p':
        done = convertWholeNumber(directive, value);
        break;
    default:
        done = convertReal(directive, value);
    }
    if (!done) {
        auto whole = directive;
        whole.precision = -1;
        convertText(whole, value);
    }
}

bool Formatter::convertWholeNumber(const FormatDirective &directive, const Value &value)
{
    const auto given = wholeNumberOf(value);
    if (!given) {
        return false;
    }
    const auto number = fitted(*given, directive);
    const auto conversion = directive.conversion;
    std::array<char16_t, 24> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init)
    const auto *const end = buffer.data() + buffer.size();
    const auto *const first =
        writeDigits(buffer.data() + buffer.size(), number.magnitude, conversion);
    // Without a precision, -1, there is at least one digit, too.
    int zeros = std::max(0, std::abs(directive.precision) - static_cast<int>(end - first));
    if (conversion == u'o' && directive.alternate && zeros == 0) {
        zeros = 1;
    }

    QStringView prefix;
    if (number.negative) {
        prefix = u"-";
    } else if (isSigned(conversion)) {
        prefix = directive.plus ? u"+" : directive.space ? u" " : QStringView();
    } else if (conversion == u'p' || (directive.alternate && number.magnitude != 0)) {
        prefix = conversion == u'X'                         ? u"0X"
                 : conversion == u'x' || conversion == u'p' ? u"0x"
                                                            : QStringView();
    }
    auto field = directive;
    field.zero = directive.zero && directive.precision < 0;
    appendField(field, prefix, zeros, QStringView(first, end));
    return true;
}

bool Formatter::convertReal(const FormatDirective &directive, const Value &value)
{
    const auto number = realOf(value);
    if (!number) {
        return false;
    }
    // The C library knows how, but must not take the decimal point from the user's locale.
    static auto *const cLocale = ::newlocale(LC_ALL_MASK, "C", nullptr);
    std::array<char, 16> pattern{};
    auto *end = pattern.data();
    *end++ = '%';
    for (const auto &[set, flag] :
         {std::pair(directive.left, '-'), std::pair(directive.plus, '+'),
          std::pair(directive.space, ' '), std::pair(directive.alternate, '#'),
          std::pair(directive.zero, '0')}) {
        if (set) {
            *end++ = flag;
        }
    }
    for (const char character : {'*', '.', '*', static_cast<char>(directive.conversion)}) {
        *end++ = character;
    }
    // Sign, 309 digits, point and decimals.
    std::array<char, mostFormatWidth + 320> text; // NOLINT(cppcoreguidelines-pro-type-member-init)
    auto *const previous = ::uselocale(cLocale);
    const auto size = std::snprintf(text.data(), text.size(), pattern.data(), directive.width,
                                    directive.precision, *number);
    ::uselocale(previous);
    appendBytes({}, {text.data(), static_cast<std::size_t>(size)});
    return true;
}

bool Formatter::convertCharacter(const FormatDirective &directive, const Value &value)
{
    const auto number = isText(value) ? std::nullopt : wholeNumberOf(value);
    if (!number || number->negative || number->magnitude > QChar::LastValidCodePoint) {
        return false;
    }
    const auto code = static_cast<char32_t>(number->magnitude);
    auto field = directive;
    field.precision = -1;
    appendText(field, QString::fromUcs4(&code, 1));
    return true;
}

void Formatter::convertText(const FormatDirective &directive, const Value &value)
{
    if (const auto *const *text = std::get_if<const QString *>(&value)) {
        appendText(directive, **text);
        return;
    }
    const auto *const *utf8 = std::get_if<const char *>(&value);
    if (utf8 == nullptr || *utf8 == nullptr) {
        appendText(directive, textOf(value));
        return;
    }
    if (directive.precision < 0) {
        appendBytes(directive, {*utf8, std::strlen(*utf8)});
        return;
    }
    // The precision may stand for a missing NUL, as in C, and may fall into a character.
    const auto size = ::strnlen(*utf8, static_cast<std::size_t>(directive.precision));
    auto text = QString::fromUtf8(*utf8, static_cast<int>(size));
    if (text.endsWith(QChar::ReplacementCharacter)) {
        text.chop(1);
    }
    appendText(directive, text);
}

void Formatter::append(QStringView text)
{
    if (!text.isEmpty()) {
        m_output.append(text.utf16(), static_cast<int>(text.size()));
    }
}

void Formatter::appendTimes(char16_t character, int times)
{
    for (; times > 0; --times) {
        m_output.append(character);
    }
}

// Prefix, zeros and body, filled up to the directive's width.
void Formatter::appendField(const FormatDirective &directive, QStringView prefix, int zeros,
                            QStringView body)
{
    const auto size = prefix.size() + zeros + body.size();
    const auto padding = static_cast<int>(std::max<qsizetype>(0, directive.width - size));
    if (!directive.left) {
        if (directive.zero) {
            zeros += padding;
        } else {
            appendTimes(u' ', padding);
        }
    }
    append(prefix);
    appendTimes(u'0', zeros);
    append(body);
    if (directive.left) {
        appendTimes(u' ', padding);
    }
}

void Formatter::appendText(const FormatDirective &directive, const QString &text)
{
    auto shown = text.isNull() ? QStringView(u"(null)") : QStringView(text);
    if (directive.precision >= 0 && directive.precision < shown.size()) {
        shown.truncate(directive.precision);
        if (!shown.isEmpty() && shown.back().isHighSurrogate()) {
            shown.chop(1);
        }
    }
    auto field = directive;
    field.zero = false;
    appendField(field, {}, 0, shown);
}

// UTF-8 without a precision; ASCII, the usual case, without an intermediate text.
void Formatter::appendBytes(const FormatDirective &directive, std::string_view bytes)
{
    if (std::any_of(bytes.begin(), bytes.end(), [](char byte) { return byte < 0; })) {
        appendText(directive, QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size())));
        return;
    }
    const auto padding = directive.width - static_cast<int>(bytes.size());
    appendTimes(u' ', directive.left ? 0 : padding);
    const auto start = m_output.size();
    m_output.resize(start + static_cast<int>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), m_output.begin() + start);
    appendTimes(u' ', directive.left ? padding : 0);
}

} // namespace

QString formatText(const QString &format, std::initializer_list<FormatArgument> arguments)
{
    return format.contains(u'%') ? Formatter(format, arguments).text() : format;
}

} // namespace platform
