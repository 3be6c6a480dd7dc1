// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Keys/VirtualKeyCode.h"

#include <QVector>

namespace test {

// All virtual key codes that stand for a key, ascending.
inline QVector<quint16> virtualKeyCodes()
{
    QVector<quint16> codes;
    for (quint16 code = 0; code < platform::virtualkey::limit; ++code) {
        if (platform::evdevCode(code)) {
            codes << code;
        }
    }
    return codes;
}

} // namespace test
