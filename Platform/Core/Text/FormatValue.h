// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Text/TextFormat.h"

#include <optional>

// How formatText() reads its arguments.
namespace platform {

// The value in a QVariant where that is a text or a number; else the value itself.
FormatArgument::Value unwrapped(const FormatArgument::Value &value);

struct WholeNumber {
    quint64 magnitude = 0;
    bool negative = false;
};

// A number cut to a whole one, a character's code, a pointer's address or the number that a text
// reads as.
std::optional<WholeNumber> wholeNumberOf(const FormatArgument::Value &value);

std::optional<double> realOf(const FormatArgument::Value &value);

// What "%@" prints; null for no text.
QString textOf(const FormatArgument::Value &value);

} // namespace platform
