// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVariant>

// Texts of any length for a place that has room for some.
namespace platform {

// The first UTF-16 units of a text, at most maxLength, with "…" where that is not all of it.
QString shortened(const QString &text, int maxLength);

// The description of a value (see TextFormat.h), shortened; quick however much it holds.
QString shortDescription(const QVariant &value, int maxLength);

} // namespace platform
