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

// Values in all, each one counted as often as it is met. A value takes about 64 bytes beside its
// content, so that memory for both has the same bound.
constexpr qint64 maximumValues = qint64(1024) * 1024;
constexpr qint64 valueWeight = maximumSize / maximumValues;

} // namespace platform::propertylist
