// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

// The editor of a preset's keys.
class ZQKeyboardLayoutEditController {
public:
    /// nameForKeyCode:modifiers:
    /// The text that shows a shortcut, e.g. "Ctrl+Shift+S"; "(null)" stands for a key without a
    /// name. The key code is read as an unsigned 16-bit number, the modifiers as an unsigned word.
    static QString nameForKeyCode(const QVariant &keyCode, const QVariant &modifiers);

    /// stringForKeyCode:withModifierFlags:
    /// The name of a key: its character in the session's keyboard layout, in the main bundle's
    /// language where it has a name. Null when the layout has nothing for it; the reason goes to
    /// the system console.
    static QString stringForKeyCode(quint16 keyCode, quint32 modifierFlags);
};
