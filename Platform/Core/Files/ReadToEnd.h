// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace platform {

// The most that fits a QByteArray: 2 GiB with Qt 5.
extern const qint64 maxReadingSize;

// Reads a pipe or a file to its end. Never null. Throws an Exception with the reason when it cannot
// be read or more than that comes.
QByteArray readToEnd(int file, qint64 maximumSize = maxReadingSize);

} // namespace platform
