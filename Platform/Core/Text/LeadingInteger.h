// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVariant>

namespace platform {

// integerValue: the whole number that a text begins with, behind white space and a sign; 0 where it
// begins with none, the nearest number where that does not fit.
qlonglong leadingInteger(const QString &text);

// The same of a text or a number of a property list, cut towards 0; 0 of anything else.
qlonglong leadingInteger(const QVariant &value);

} // namespace platform
