// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/FormatDirective.h"

#include <algorithm>

namespace platform {
namespace {

bool isConversion(char16_t letter)
{
    switch (letter) {
    case u'@':
    case u's':
    case u'd':
    case u'i':
    case u'u':
    case u'o':
    case u'x':
    case u'X':
    case u'f':
    case u'F':
    case u'e':
    case u'E':
    case u'g':
    case u'G':
    case u'a':
    case u'A':
    case u'c':
    case u'p':
        return true;
    default:
        return false;
    }
}

bool isLength(char16_t letter)
{
    return letter == u'l' || letter == u'h' || letter == u'z' || letter == u'q' || letter == u'L' ||
           letter == u'j' || letter == u't';
}

class Parser {
public:
    Parser(QStringView format, qsizetype position) : m_format(format), m_position(position) {}

    qsizetype position() const { return m_position; }

    void parse(FormatDirective &directive);

private:
    // The character at the position; NUL, which no directive holds, at the end.
    char16_t current() const
    {
        return m_position < m_format.size() ? m_format[m_position].unicode() : u'\0';
    }

    void parseFlags(FormatDirective &directive);
    int parseNumber(bool &isArgument);

    QStringView m_format;
    qsizetype m_position;
};

void Parser::parse(FormatDirective &directive)
{
    if (current() == u'%') {
        directive.conversion = u'%';
        ++m_position;
        return;
    }
    parseFlags(directive);
    directive.width = parseNumber(directive.widthIsArgument);
    if (current() == u'.') {
        ++m_position;
        directive.precision = parseNumber(directive.precisionIsArgument);
    }
    for (; isLength(current()); ++m_position) {
        if (current() == u'h') {
            ++directive.shortness;
        } else {
            directive.isLong = true;
        }
    }
    if (isConversion(current())) {
        directive.conversion = current();
        ++m_position;
    }
}

void Parser::parseFlags(FormatDirective &directive)
{
    for (;; ++m_position) {
        switch (current()) {
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

int Parser::parseNumber(bool &isArgument)
{
    if (current() == u'*') {
        ++m_position;
        isArgument = true;
        return 0;
    }
    int number = 0;
    for (; current() >= u'0' && current() <= u'9'; ++m_position) {
        number = std::min(mostFormatWidth, number * 10 + (current() - u'0'));
    }
    return number;
}

} // namespace

qsizetype parseDirective(QStringView format, qsizetype position, FormatDirective &directive)
{
    Parser parser(format, position);
    parser.parse(directive);
    return parser.position();
}

} // namespace platform
