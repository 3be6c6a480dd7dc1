// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/TextFormat.h"

#include "Platform/FormatValue.h"

#include <QStringView>
#include <QVarLengthArray>

#include <locale.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace platform {
namespace {

using Value = FormatArgument::Value;

constexpr int mostWidth = 4095;

// "%", flags, width, "." and precision, length, conversion.
struct Directive {
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    int width = 0;
    int precision = -1; // none
    int shortness = 0;  // how many "h"
    char16_t conversion = 0;
};

bool contains(std::u16string_view characters, char16_t character)
{
    return character != 0 && characters.find(character) != std::u16string_view::npos;
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
    char16_t at(qsizetype position) const;
    qsizetype parse(qsizetype position, Directive &directive);
    void parseFlags(qsizetype &position, Directive &directive) const;
    int parseNumber(qsizetype &position);

    void convert(const Directive &directive, const Value &value);
    bool convertWholeNumber(const Directive &directive, const Value &value);
    bool convertReal(const Directive &directive, const Value &value);
    bool convertCharacter(const Directive &directive, const Value &value);
    void convertText(const Directive &directive, const Value &value);

    void append(QStringView text);
    void appendTimes(char16_t character, int times);
    void appendField(const Directive &directive, QStringView prefix, int zeros, QStringView body);
    void appendText(const Directive &directive, const QString &text);
    void appendBytes(const Directive &directive, std::string_view bytes);

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
        Directive directive;
        const auto *const first = m_next;
        position = parse(percent + 1, directive);
        if (directive.conversion == u'%') {
            append(u"%");
        } else if (directive.conversion == 0) {
            m_next = first;
            append(m_format.mid(percent, position - percent));
        } else if (m_next == m_end) {
            append(u"(null)");
        } else {
            convert(directive, unwrapped((m_next++)->value()));
        }
    }
    return QString(reinterpret_cast<const QChar *>(m_output.constData()), m_output.size());
}

char16_t Formatter::at(qsizetype position) const
{
    return position < m_format.size() ? m_format[position].unicode() : u'\0';
}

// Reads a directive behind its "%" and returns the position behind it. No conversion: the directive
// is unknown or unfinished, and what stands at the position is no part of it.
qsizetype Formatter::parse(qsizetype position, Directive &directive)
{
    const auto start = position;
    parseFlags(position, directive);
    directive.width = parseNumber(position);
    if (directive.width < 0) {
        directive.left = true;
        directive.width = -directive.width;
    }
    if (at(position) == u'.') {
        ++position;
        directive.precision = std::max(-1, parseNumber(position));
    }
    for (; contains(u"hlqLjzt", at(position)); ++position) {
        directive.shortness += at(position) == u'h' ? 1 : 0;
    }
    if (at(position) == u'%' ? position == start : contains(u"@sdiuxXofFeEgGaAcp", at(position))) {
        directive.conversion = at(position++);
    }
    return position;
}

void Formatter::parseFlags(qsizetype &position, Directive &directive) const
{
    for (;; ++position) {
        switch (at(position)) {
        case u'-':
            directive.left = true;
            break;
        case u'+':
            directive.plus = true;
            break;
        case u' ':
            directive.space = true;
            break;
        case u'#':
            directive.alternate = true;
            break;
        case u'0':
            directive.zero = true;
            break;
        case u'\'': // the "C" locale has no grouping
            break;
        default:
            return;
        }
    }
}

// The digits at the position, or the argument for a "*"; 0 where there is neither.
int Formatter::parseNumber(qsizetype &position)
{
    if (at(position) == u'*') {
        ++position;
        const auto number =
            m_next == m_end ? std::nullopt : wholeNumberOf(unwrapped((m_next++)->value()));
        const auto magnitude =
            number ? static_cast<int>(std::min<quint64>(number->magnitude, mostWidth)) : 0;
        return number && number->negative ? -magnitude : magnitude;
    }
    int number = 0;
    for (; contains(u"0123456789", at(position)); ++position) {
        number = std::min(mostWidth, number * 10 + (at(position) - u'0'));
    }
    return number;
}

void Formatter::convert(const Directive &directive, const Value &value)
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

bool Formatter::convertWholeNumber(const Directive &directive, const Value &value)
{
    auto number = wholeNumberOf(value);
    if (!number) {
        return false;
    }
    const auto conversion = directive.conversion;
    const bool isSigned = conversion == u'd' || conversion == u'i';
    if (directive.shortness > 0) {
        const auto bits = number->negative ? 0 - number->magnitude : number->magnitude;
        const auto low = directive.shortness > 1 ? bits & 0xFFU : bits & 0xFFFFU;
        const auto top = directive.shortness > 1 ? 0x80U : 0x8000U;
        number->negative = isSigned && (low & top) != 0;
        number->magnitude = number->negative ? 2 * top - low : low;
    } else if (number->negative && !isSigned) {
        // Two's complement in 32 bits where that holds the number, as for an int in C.
        const auto bits = 0 - number->magnitude;
        number->magnitude = number->magnitude <= 0x80000000U ? bits & 0xFFFFFFFFU : bits;
        number->negative = false;
    }

    const bool isHex = conversion == u'x' || conversion == u'X' || conversion == u'p';
    const quint64 base = isHex ? 16 : conversion == u'o' ? 8 : 10;
    const auto *const digits = conversion == u'X' ? u"0123456789ABCDEF" : u"0123456789abcdef";
    std::array<char16_t, 24> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init)
    auto *const end = buffer.data() + buffer.size();
    auto *first = end;
    for (auto rest = number->magnitude; rest != 0; rest /= base) {
        *--first = digits[rest % base];
    }
    int zeros = std::max(0, std::max(directive.precision, directive.precision < 0 ? 1 : 0) -
                                static_cast<int>(end - first));
    if (conversion == u'o' && directive.alternate && zeros == 0) {
        zeros = 1;
    }

    QStringView prefix;
    if (isHex && (conversion == u'p' || (directive.alternate && number->magnitude != 0))) {
        prefix = conversion == u'X' ? u"0X" : u"0x";
    } else if (isSigned) {
        prefix = number->negative  ? u"-"
                 : directive.plus  ? u"+"
                 : directive.space ? u" "
                                   : QStringView();
    }
    auto field = directive;
    field.zero = directive.zero && directive.precision < 0;
    appendField(field, prefix, zeros, QStringView(first, end));
    return true;
}

bool Formatter::convertReal(const Directive &directive, const Value &value)
{
    const auto number = realOf(value);
    if (!number) {
        return false;
    }
    // The C library knows how, but must not take the decimal point from the user's locale.
    static const auto cLocale = ::newlocale(LC_ALL_MASK, "C", nullptr);
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
    std::array<char, mostWidth + 320> text; // NOLINT(cppcoreguidelines-pro-type-member-init)
    const auto previous = ::uselocale(cLocale);
    const auto size = std::snprintf(text.data(), text.size(), pattern.data(), directive.width,
                                    directive.precision, *number);
    ::uselocale(previous);
    appendBytes({}, {text.data(), static_cast<std::size_t>(size)});
    return true;
}

bool Formatter::convertCharacter(const Directive &directive, const Value &value)
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

void Formatter::convertText(const Directive &directive, const Value &value)
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
    m_output.append(text.utf16(), static_cast<int>(text.size()));
}

void Formatter::appendTimes(char16_t character, int times)
{
    for (; times > 0; --times) {
        m_output.append(character);
    }
}

// Prefix, zeros and body, filled up to the directive's width.
void Formatter::appendField(const Directive &directive, QStringView prefix, int zeros,
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

void Formatter::appendText(const Directive &directive, const QString &text)
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
void Formatter::appendBytes(const Directive &directive, std::string_view bytes)
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
