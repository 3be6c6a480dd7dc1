// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/VirtualKeyCode.h"

#include "Platform/Core/Keys/SpecialKey.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>

namespace platform {
namespace {

// Of each virtual key code, by place on the keyboard; KEY_RESERVED where it stands for no key.
constexpr std::array<quint16, virtualkey::limit> evdevCodes{
    // 0x00
    KEY_A, KEY_S, KEY_D, KEY_F, KEY_H, KEY_G, KEY_Z, KEY_X, KEY_C, KEY_V, KEY_102ND, KEY_B, KEY_Q,
    KEY_W, KEY_E, KEY_R,
    // 0x10
    KEY_Y, KEY_T, KEY_1, KEY_2, KEY_3, KEY_4, KEY_6, KEY_5, KEY_EQUAL, KEY_9, KEY_7, KEY_MINUS,
    KEY_8, KEY_0, KEY_RIGHTBRACE, KEY_O,
    // 0x20
    KEY_U, KEY_LEFTBRACE, KEY_I, KEY_P, KEY_ENTER, KEY_L, KEY_J, KEY_APOSTROPHE, KEY_K,
    KEY_SEMICOLON, KEY_BACKSLASH, KEY_COMMA, KEY_SLASH, KEY_N, KEY_M, KEY_DOT,
    // 0x30
    KEY_TAB, KEY_SPACE, KEY_GRAVE, KEY_BACKSPACE, KEY_RESERVED, KEY_ESC, KEY_RIGHTMETA,
    KEY_LEFTMETA, KEY_LEFTSHIFT, KEY_CAPSLOCK, KEY_LEFTALT, KEY_LEFTCTRL, KEY_RIGHTSHIFT,
    KEY_RIGHTALT, KEY_RIGHTCTRL, KEY_FN,
    // 0x40
    KEY_F17, KEY_KPDOT, KEY_RESERVED, KEY_KPASTERISK, KEY_RESERVED, KEY_KPPLUS, KEY_RESERVED,
    KEY_NUMLOCK, KEY_VOLUMEUP, KEY_VOLUMEDOWN, KEY_MUTE, KEY_KPSLASH, KEY_KPENTER, KEY_RESERVED,
    KEY_KPMINUS, KEY_F18,
    // 0x50
    KEY_F19, KEY_KPEQUAL, KEY_KP0, KEY_KP1, KEY_KP2, KEY_KP3, KEY_KP4, KEY_KP5, KEY_KP6, KEY_KP7,
    KEY_F20, KEY_KP8, KEY_KP9, KEY_YEN, KEY_RO, KEY_KPCOMMA,
    // 0x60
    KEY_F5, KEY_F6, KEY_F7, KEY_F3, KEY_F8, KEY_F9, KEY_MUHENKAN, KEY_F11, KEY_HENKAN, KEY_F13,
    KEY_F16, KEY_F14, KEY_RESERVED, KEY_F10, KEY_COMPOSE, KEY_F12,
    // 0x70
    KEY_RESERVED, KEY_F15, KEY_INSERT, KEY_HOME, KEY_PAGEUP, KEY_DELETE, KEY_F4, KEY_END, KEY_F2,
    KEY_PAGEDOWN, KEY_F1, KEY_LEFT, KEY_RIGHT, KEY_DOWN, KEY_UP, KEY_RESERVED};

bool isOneOf(quint16 key, std::initializer_list<virtualkey::Code> codes)
{
    return std::find(codes.begin(), codes.end(), key) != codes.end();
}

} // namespace

std::optional<quint16> virtualKeyCode(quint32 evdevCode)
{
    // The same keys as other keyboards send them. JIS keyboards made for these key codes send the
    // Korean language keys, which have the same USB usages.
    switch (evdevCode) {
    case KEY_RESERVED:
        return std::nullopt;
    case KEY_HELP:
        return virtualkey::Help;
    case KEY_KPJPCOMMA:
        return virtualkey::KeypadComma;
    case KEY_HANGEUL:
        return virtualkey::Kana;
    case KEY_HANJA:
        return virtualkey::Eisu;
    // Print Screen of a PC keyboard stands where F13 stands on keyboards made for these codes.
    case KEY_SYSRQ:
        return virtualkey::F13;
    default:
        break;
    }
    const auto *found = std::find(evdevCodes.begin(), evdevCodes.end(), evdevCode);
    return found == evdevCodes.end()
               ? std::nullopt
               : std::optional(static_cast<quint16>(found - evdevCodes.begin()));
}

std::optional<quint32> evdevCode(quint16 virtualKeyCode)
{
    const quint32 code =
        virtualKeyCode < evdevCodes.size() ? evdevCodes[virtualKeyCode] : KEY_RESERVED;
    return code == KEY_RESERVED ? std::nullopt : std::optional(code);
}

bool isKeypadKey(quint16 virtualKeyCode)
{
    using namespace virtualkey;
    return (virtualKeyCode >= Keypad0 && virtualKeyCode <= Keypad9 && virtualKeyCode != F20) ||
           isOneOf(virtualKeyCode,
                   {KeypadDecimal, KeypadMultiply, KeypadPlus, KeypadClear, KeypadDivide,
                    KeypadEnter, KeypadMinus, KeypadEquals, KeypadComma});
}

bool isArrowKey(quint16 virtualKeyCode)
{
    return virtualKeyCode >= virtualkey::LeftArrow && virtualKeyCode <= virtualkey::UpArrow;
}

bool isFunctionKey(quint16 virtualKeyCode)
{
    constexpr char16_t firstFunctionCharacter = 0xF700;
    const auto *key = specialKey(virtualKeyCode);
    return key != nullptr && key->eventCharacter >= firstFunctionCharacter &&
           !isKeypadKey(virtualKeyCode);
}

bool isInputModeKey(quint16 virtualKeyCode)
{
    return isOneOf(virtualKeyCode, {virtualkey::KeypadClear, virtualkey::Eisu, virtualkey::Kana});
}

bool isModifierKey(quint16 virtualKeyCode)
{
    return virtualKeyCode >= virtualkey::RightCommand && virtualKeyCode <= virtualkey::Function;
}

} // namespace platform
