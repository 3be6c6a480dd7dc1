// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Text/TextFormat.h"

namespace platform {

// Writes one line to the system console: the system log under the program's name, and standard
// error when that is a terminal. Line breaks and control characters inside the text are escaped.
// Any thread; never fails.
void consoleLine(const QString &text);

// NSLog: formats as platform::format() and writes a console line.
template <typename... Arguments>
void consoleLog(const QString &text, const Arguments &...arguments)
{
    consoleLine(format(text, arguments...));
}

// puts: writes the text as UTF-8 and a line break to standard output, in one piece. Any thread.
void printLine(const QString &text);

} // namespace platform
