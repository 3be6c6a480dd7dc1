// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Alerts/ZQAlertCompletion.h"

#include "Shared/Basics/DelegateMethod.h"

QMetaMethod completionMethod(const QObject &delegate, const QString &selector)
{
    if (selector.count(QLatin1Char(':')) != 3 || !selector.endsWith(QLatin1Char(':'))) {
        return {};
    }
    const auto name = selector.left(selector.indexOf(QLatin1Char(':'))).toUtf8();
    return delegateMethod(delegate, name,
                          {QMetaType::QObjectStar, QMetaType::LongLong, QMetaType::VoidStar});
}
