// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaMethod>
#include <QString>

// The completion message of an alert whose caller names none.
inline const QString defaultCompletionSelector =
    QStringLiteral("alertDidEnd:returnCode:contextInfo:");

// The delegate's method for a completion selector (see ZQAlert); invalid when it has none.
QMetaMethod completionMethod(const QObject &delegate, const QString &selector);
