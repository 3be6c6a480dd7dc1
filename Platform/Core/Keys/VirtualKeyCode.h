// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <optional>

namespace platform {

// Virtual key codes as events and preset files carry them: places on the keyboard, named after what
// the US layout has there.
namespace virtualkey {

enum Code : quint16 {
    A = 0x00,
    S = 0x01,
    Section = 0x0A, // beside the left Shift of ISO keyboards
    LeftBracket = 0x21,
    Return = 0x24,
    Quote = 0x27,
    Tab = 0x30,
    Space = 0x31,
    Grave = 0x32,
    Backspace = 0x33,
    Escape = 0x35,
    RightCommand = 0x36,
    Command = 0x37,
    Shift = 0x38,
    CapsLock = 0x39,
    Option = 0x3A,
    Control = 0x3B,
    RightShift = 0x3C,
    RightOption = 0x3D,
    RightControl = 0x3E,
    Function = 0x3F,
    KeypadDecimal = 0x41,
    KeypadMultiply = 0x43,
    KeypadPlus = 0x45,
    KeypadClear = 0x47,
    VolumeUp = 0x48,
    VolumeDown = 0x49,
    Mute = 0x4A,
    KeypadDivide = 0x4B,
    KeypadEnter = 0x4C,
    KeypadMinus = 0x4E,
    KeypadEquals = 0x51,
    Keypad0 = 0x52,
    Keypad1 = 0x53,
    Keypad2 = 0x54,
    Keypad3 = 0x55,
    Keypad4 = 0x56,
    Keypad5 = 0x57,
    Keypad6 = 0x58,
    Keypad7 = 0x59,
    Keypad8 = 0x5B,
    Keypad9 = 0x5C,
    Yen = 0x5D, // JIS
    KeypadComma = 0x5F,
    Eisu = 0x66, // JIS, left of the space bar
    Kana = 0x68, // JIS, right of the space bar
    F1 = 0x7A,
    F2 = 0x78,
    F3 = 0x63,
    F4 = 0x76,
    F5 = 0x60,
    F6 = 0x61,
    F7 = 0x62,
    F8 = 0x64,
    F9 = 0x65,
    F10 = 0x6D,
    F11 = 0x67,
    F12 = 0x6F,
    F13 = 0x69,
    F14 = 0x6B,
    F15 = 0x71,
    F16 = 0x6A,
    F17 = 0x40,
    F18 = 0x4F,
    F19 = 0x50,
    F20 = 0x5A,
    ContextMenu = 0x6E,
    Help = 0x72, // Insert on a PC keyboard
    Home = 0x73,
    PageUp = 0x74,
    ForwardDelete = 0x75,
    End = 0x77,
    PageDown = 0x79,
    LeftArrow = 0x7B,
    RightArrow = 0x7C,
    DownArrow = 0x7D,
    UpArrow = 0x7E,
};

// All codes are below this one.
inline constexpr quint16 limit = 0x80;

} // namespace virtualkey

// The virtual key code of an evdev code ("KEY_..." of linux/input-event-codes.h); nothing for a key
// that virtual key codes do not know.
std::optional<quint16> virtualKeyCode(quint32 evdevCode);

// The evdev code of a virtual key code; nothing for a code that stands for no key.
std::optional<quint32> evdevCode(quint16 virtualKeyCode);

// What the numeric keypad has, its Enter and Clear included.
bool isKeypadKey(quint16 virtualKeyCode);

bool isArrowKey(quint16 virtualKeyCode);

// The arrows, F1 to F20, and what stands above the arrows: keys whose events carry the function
// bit.
bool isFunctionKey(quint16 virtualKeyCode);

// Num Lock (which is where Clear is), Henkan and Muhenkan: keys that change how the keyboard types.
// No layout has a name for them; Num Lock's character is that of Escape.
bool isInputModeKey(quint16 virtualKeyCode);

// Shift, Control, Option, Command, Caps Lock and Fn: keys that change others.
bool isModifierKey(quint16 virtualKeyCode);

} // namespace platform
