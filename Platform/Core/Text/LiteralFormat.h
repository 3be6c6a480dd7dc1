// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace platform {

// A text for a place that takes a format: one without directives that prints just that text.
inline QString literalFormat(QString text)
{
    return text.replace(u'%', QStringLiteral("%%"));
}

} // namespace platform
