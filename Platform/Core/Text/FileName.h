// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

// File names as text. The system's names are bytes, usually UTF-8 and sometimes not: a byte that
// does not decode becomes the lone surrogate U+DC80 to U+DCFF that stands for it and turns back
// into that very byte, whatever the locale. (The convention is Python's "surrogateescape".)
namespace platform {

QString fileNameFromBytes(const QByteArray &bytes);

// Lone surrogates that stand for no byte become a replacement character.
QByteArray fileNameBytes(const QString &name);

} // namespace platform
