// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QSignalSpy>

// What a signal of one flag has carried, in order.
inline QList<bool> valuesOf(const QSignalSpy &spy)
{
    QList<bool> values;
    for (int i = 0; i < static_cast<int>(spy.size()); ++i) {
        values << spy.at(i).at(0).toBool();
    }
    return values;
}
