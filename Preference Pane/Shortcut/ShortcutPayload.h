// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariantMap>

// What the notification of a captured shortcut says, in its two forms, and how people read it.
namespace shortcutPayload {

// "keycode", "modifierFlags" (the whole word), and "shift", "ctrl", "opt" and "cmd".
QVariantMap ofSheet(quint16 keyCode, quint32 modifierFlags);

// The same without "modifierFlags". A press without any of the four modifiers counts as one with
// Shift and Command, as the keyboard editor requires.
QVariantMap ofFieldEditor(quint16 keyCode, quint32 modifierFlags);

// The modifiers of a flag word: "Ctrl+", "Shift+", "Alt+" and "Cmd+", in this order.
QString prefixes(quint32 modifierFlags);

} // namespace shortcutPayload
