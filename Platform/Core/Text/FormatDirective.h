// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStringView>

namespace platform {

// Limit of width and precision: the most characters that C promises for one directive.
inline constexpr int mostFormatWidth = 4095;

// A directive of formatText(): "%", flags, width, "." and precision, length, conversion.
struct FormatDirective {
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    bool widthIsArgument = false;
    bool precisionIsArgument = false;
    bool isLong = false; // any length modifier but "h"
    int shortness = 0;   // how many "h"
    int width = 0;
    int precision = -1;      // none
    char16_t conversion = 0; // none: the directive is unknown or unfinished
};

// Reads the directive whose "%" stands before the position and returns the position after it. What
// stands there is no part of the directive, also where that is unknown.
qsizetype parseDirective(QStringView format, qsizetype position, FormatDirective &directive);

} // namespace platform
