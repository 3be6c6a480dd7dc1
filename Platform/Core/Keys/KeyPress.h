// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Keys/VirtualKeyCode.h"

#include <QString>

#include <array>
#include <optional>

class QKeyEvent;

namespace platform {

// The modifier-flag word of a key press.
namespace keyflags {

inline constexpr quint32 CapsLock = 0x10000;
inline constexpr quint32 Shift = 0x20000;
inline constexpr quint32 Control = 0x40000;
inline constexpr quint32 Option = 0x80000;   // Alt, and AltGr
inline constexpr quint32 Command = 0x100000; // Meta, Super
inline constexpr quint32 NumericPad = 0x200000;
inline constexpr quint32 Function = 0x800000;

// Which of two keys.
inline constexpr quint32 LeftControl = 0x1;
inline constexpr quint32 LeftShift = 0x2;
inline constexpr quint32 RightShift = 0x4;
inline constexpr quint32 LeftCommand = 0x8;
inline constexpr quint32 RightCommand = 0x10;
inline constexpr quint32 LeftOption = 0x20;
inline constexpr quint32 RightOption = 0x40;
inline constexpr quint32 RightControl = 0x2000;

// In the word of every press of a keyboard, and so in every word here: words in presets then look
// the same wherever they were captured.
inline constexpr quint32 Keyboard = 0x100;

// The four modifiers that tell shortcuts apart.
inline constexpr quint32 ShortcutModifiers = Shift | Control | Option | Command;

} // namespace keyflags

// One of those four, as Qt, flag words and virtual key codes know it.
struct ModifierKey {
    Qt::KeyboardModifier modifier;
    quint32 flag;
    quint32 leftFlag;
    quint32 rightFlag;
    virtualkey::Code leftCode;
    virtualkey::Code rightCode;
};

inline constexpr std::array<ModifierKey, 4> modifierKeys{
    {{Qt::ShiftModifier, keyflags::Shift, keyflags::LeftShift, keyflags::RightShift,
      virtualkey::Shift, virtualkey::RightShift},
     {Qt::ControlModifier, keyflags::Control, keyflags::LeftControl, keyflags::RightControl,
      virtualkey::Control, virtualkey::RightControl},
     {Qt::AltModifier, keyflags::Option, keyflags::LeftOption, keyflags::RightOption,
      virtualkey::Option, virtualkey::RightOption},
     {Qt::MetaModifier, keyflags::Command, keyflags::LeftCommand, keyflags::RightCommand,
      virtualkey::Command, virtualkey::RightCommand}}};

// Which of Qt's modifiers the key of an event is: Qt::AltModifier for AltGr and its like, too.
// Qt::NoModifier for any other key.
Qt::KeyboardModifier modifierOf(const QKeyEvent &event);

// The modifiers that are held now, whichever window heard of their presses, as the flag word of the
// next press would have them. Under Wayland only while one of the program's windows has the
// keyboard. Main thread only.
quint32 heldModifierFlags();

// What a press or release of a key says in virtual key codes. Call HeldModifiers::shared() early
// (when the window opens), or right modifiers count as left ones. Main thread only.
class KeyPress {
public:
    explicit KeyPress(const QKeyEvent &event);

    // Nothing for a key that virtual key codes do not know.
    std::optional<quint16> keyCode() const { return m_keyCode; }

    // Shift, Control and so on by themselves are no key presses elsewhere; nor should they be here.
    bool isModifierKey() const { return m_isModifierKey; }

    // The key code of a press that can be a shortcut: nothing for modifiers, for keys that change
    // how the keyboard types, and for keys without a code.
    std::optional<quint16> shortcutKeyCode() const;

    // The bits of keyflags. In the event of a modifier key they tell what is held after it.
    quint32 modifierFlags() const { return m_modifierFlags; }

    // The text of the key with no modifier but Shift: 0x7F for the backspace key, U+F700 and the
    // following ones for keys that move, edit or are called F1. Empty for a dead key.
    QString charactersIgnoringModifiers() const;

private:
    std::optional<quint16> m_keyCode;
    bool m_isModifierKey;
    quint32 m_modifierFlags;
    bool m_isFromKeyboard;
    int m_qtKey;
    QString m_text;
};

// The key code of an event: of its scan code, which under X11 and Wayland is 8 more than the evdev
// code, or else that of the key with this meaning on a US keyboard. The meaning counts also where
// the user has made another key of a modifier key.
std::optional<quint16> virtualKeyCodeOf(const QKeyEvent &event);

// Whether AltGr or whatever the layout has for the third level is held or locked.
bool choosesThirdLevel(const QKeyEvent &event);

// Whether one of Qt's modifiers is on; Qt::AltModifier also where the third level is chosen.
bool hasModifier(const QKeyEvent &event, Qt::KeyboardModifier modifier);

} // namespace platform
