// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariantMap>

// What the notification of a captured shortcut says, in its two forms.
namespace shortcutPayload {

// "keycode", "modifierFlags" (the whole word), and "shift", "ctrl", "opt" and "cmd".
QVariantMap ofSheet(quint16 keyCode, quint32 modifierFlags);

// The same without "modifierFlags". A press without any of the four modifiers counts as one with
// Shift and Command: kept on purpose.
QVariantMap ofFieldEditor(quint16 keyCode, quint32 modifierFlags);

} // namespace shortcutPayload
