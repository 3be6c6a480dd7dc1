// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Basics/DelegateMethod.h"

#include <algorithm>

namespace {

bool takes(const QMetaMethod &method, std::initializer_list<int> parameters)
{
    int index = 0;
    return method.parameterCount() == static_cast<int>(parameters.size()) &&
           std::all_of(parameters.begin(), parameters.end(),
                       [&](int type) { return method.parameterType(index++) == type; });
}

} // namespace

QMetaMethod delegateMethod(const QObject &delegate, const QByteArray &name,
                           std::initializer_list<int> parameters)
{
    const auto *type = delegate.metaObject();
    // From the end, where the methods of the most derived class are.
    for (int i = type->methodCount() - 1; i >= 0; --i) {
        const auto method = type->method(i);
        if (method.name() == name && takes(method, parameters)) {
            return method;
        }
    }
    return {};
}
