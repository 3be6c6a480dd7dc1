// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/ZQAlertCompletion.h"

namespace {

bool takesCompletion(const QMetaMethod &method)
{
    return method.parameterCount() == 3 && method.parameterType(0) == QMetaType::QObjectStar &&
           method.parameterType(1) == QMetaType::LongLong &&
           method.parameterType(2) == QMetaType::VoidStar;
}

} // namespace

QMetaMethod completionMethod(const QObject &delegate, const QString &selector)
{
    if (selector.count(QLatin1Char(':')) != 3 || !selector.endsWith(QLatin1Char(':'))) {
        return {};
    }
    const auto name = selector.left(selector.indexOf(QLatin1Char(':'))).toUtf8();
    const auto *type = delegate.metaObject();
    // From the end, where the methods of the most derived class are.
    for (int i = type->methodCount() - 1; i >= 0; --i) {
        const auto method = type->method(i);
        if (method.name() == name && takesCompletion(method)) {
            return method;
        }
    }
    return {};
}
