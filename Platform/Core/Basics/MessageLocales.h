// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayList>

namespace platform {

// The locales that texts are looked up in, best first, without the encoding: for
// "sr_RS.UTF-8@latin" these are "sr_RS@latin", "sr_RS", "sr@latin" and "sr". From LANGUAGE and the
// locale of messages (LC_ALL, else LC_MESSAGES, else LANG), as gettext has it; none for "C" and
// "POSIX".
QByteArrayList messageLocales();

} // namespace platform
