// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

// What a property list may hold at most, so that no file can exhaust memory or the stack. Real ones
// stay far below.
namespace platform::propertylist {

// Bytes of a file or of the XML form.
constexpr qint64 maximumSize = qint64(64) * 1024 * 1024;

// Containers inside one another.
constexpr int maximumDepth = 512;

// Values in all: as many as the XML form can hold, of the shortest kind, "<true/>".
constexpr qint64 maximumValues = maximumSize / 7;

// Dates: far beyond the platform's "distant future", far before QDateTime ends.
constexpr int earliestYear = 1;
constexpr int latestYear = 99999;

} // namespace platform::propertylist
