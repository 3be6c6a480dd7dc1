// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/VirtualKeyCode.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>

namespace platform {
namespace {

struct Row {
    quint16 virtualKey;
    quint16 evdev;
};

// By place on the keyboard. Codes without a name are the letter or digit of the evdev name.
constexpr auto table = std::to_array<Row>({
    {virtualkey::A, KEY_A},
    {virtualkey::S, KEY_S},
    {0x02, KEY_D},
    {0x03, KEY_F},
    {0x04, KEY_H},
    {0x05, KEY_G},
    {0x06, KEY_Z},
    {0x07, KEY_X},
    {0x08, KEY_C},
    {0x09, KEY_V},
    {virtualkey::Section, KEY_102ND},
    {0x0B, KEY_B},
    {0x0C, KEY_Q},
    {0x0D, KEY_W},
    {0x0E, KEY_E},
    {0x0F, KEY_R},
    {0x10, KEY_Y},
    {0x11, KEY_T},
    {0x12, KEY_1},
    {0x13, KEY_2},
    {0x14, KEY_3},
    {0x15, KEY_4},
    {0x16, KEY_6},
    {0x17, KEY_5},
    {virtualkey::Equal, KEY_EQUAL},
    {0x19, KEY_9},
    {0x1A, KEY_7},
    {virtualkey::Minus, KEY_MINUS},
    {0x1C, KEY_8},
    {0x1D, KEY_0},
    {virtualkey::RightBracket, KEY_RIGHTBRACE},
    {0x1F, KEY_O},
    {0x20, KEY_U},
    {virtualkey::LeftBracket, KEY_LEFTBRACE},
    {0x22, KEY_I},
    {0x23, KEY_P},
    {virtualkey::Return, KEY_ENTER},
    {0x25, KEY_L},
    {0x26, KEY_J},
    {virtualkey::Quote, KEY_APOSTROPHE},
    {0x28, KEY_K},
    {virtualkey::Semicolon, KEY_SEMICOLON},
    {virtualkey::Backslash, KEY_BACKSLASH},
    {virtualkey::Comma, KEY_COMMA},
    {virtualkey::Slash, KEY_SLASH},
    {0x2D, KEY_N},
    {0x2E, KEY_M},
    {virtualkey::Period, KEY_DOT},
    {virtualkey::Tab, KEY_TAB},
    {virtualkey::Space, KEY_SPACE},
    {virtualkey::Grave, KEY_GRAVE},
    {virtualkey::Backspace, KEY_BACKSPACE},
    {virtualkey::Escape, KEY_ESC},
    {virtualkey::RightCommand, KEY_RIGHTMETA},
    {virtualkey::Command, KEY_LEFTMETA},
    {virtualkey::Shift, KEY_LEFTSHIFT},
    {virtualkey::CapsLock, KEY_CAPSLOCK},
    {virtualkey::Option, KEY_LEFTALT},
    {virtualkey::Control, KEY_LEFTCTRL},
    {virtualkey::RightShift, KEY_RIGHTSHIFT},
    {virtualkey::RightOption, KEY_RIGHTALT},
    {virtualkey::RightControl, KEY_RIGHTCTRL},
    {virtualkey::Function, KEY_FN},
    {virtualkey::F17, KEY_F17},
    {virtualkey::KeypadDecimal, KEY_KPDOT},
    {virtualkey::KeypadMultiply, KEY_KPASTERISK},
    {virtualkey::KeypadPlus, KEY_KPPLUS},
    {virtualkey::KeypadClear, KEY_NUMLOCK},
    {virtualkey::VolumeUp, KEY_VOLUMEUP},
    {virtualkey::VolumeDown, KEY_VOLUMEDOWN},
    {virtualkey::Mute, KEY_MUTE},
    {virtualkey::KeypadDivide, KEY_KPSLASH},
    {virtualkey::KeypadEnter, KEY_KPENTER},
    {virtualkey::KeypadMinus, KEY_KPMINUS},
    {virtualkey::F18, KEY_F18},
    {virtualkey::F19, KEY_F19},
    {virtualkey::KeypadEquals, KEY_KPEQUAL},
    {virtualkey::Keypad0, KEY_KP0},
    {virtualkey::Keypad1, KEY_KP1},
    {virtualkey::Keypad2, KEY_KP2},
    {virtualkey::Keypad3, KEY_KP3},
    {virtualkey::Keypad4, KEY_KP4},
    {virtualkey::Keypad5, KEY_KP5},
    {virtualkey::Keypad6, KEY_KP6},
    {virtualkey::Keypad7, KEY_KP7},
    {virtualkey::F20, KEY_F20},
    {virtualkey::Keypad8, KEY_KP8},
    {virtualkey::Keypad9, KEY_KP9},
    {virtualkey::Yen, KEY_YEN},
    {virtualkey::Underscore, KEY_RO},
    {virtualkey::KeypadComma, KEY_KPCOMMA},
    {virtualkey::F5, KEY_F5},
    {virtualkey::F6, KEY_F6},
    {virtualkey::F7, KEY_F7},
    {virtualkey::F3, KEY_F3},
    {virtualkey::F8, KEY_F8},
    {virtualkey::F9, KEY_F9},
    {virtualkey::Eisu, KEY_MUHENKAN},
    {virtualkey::F11, KEY_F11},
    {virtualkey::Kana, KEY_HENKAN},
    {virtualkey::F13, KEY_F13},
    {virtualkey::F16, KEY_F16},
    {virtualkey::F14, KEY_F14},
    {virtualkey::F10, KEY_F10},
    {virtualkey::ContextMenu, KEY_COMPOSE},
    {virtualkey::F12, KEY_F12},
    {virtualkey::F15, KEY_F15},
    {virtualkey::Help, KEY_INSERT},
    {virtualkey::Home, KEY_HOME},
    {virtualkey::PageUp, KEY_PAGEUP},
    {virtualkey::ForwardDelete, KEY_DELETE},
    {virtualkey::F4, KEY_F4},
    {virtualkey::End, KEY_END},
    {virtualkey::F2, KEY_F2},
    {virtualkey::PageDown, KEY_PAGEDOWN},
    {virtualkey::F1, KEY_F1},
    {virtualkey::LeftArrow, KEY_LEFT},
    {virtualkey::RightArrow, KEY_RIGHT},
    {virtualkey::DownArrow, KEY_DOWN},
    {virtualkey::UpArrow, KEY_UP},
});

// The same keys as other keyboards send them.
constexpr auto alternatives = std::to_array<Row>({
    {virtualkey::Help, KEY_HELP},
    {virtualkey::KeypadComma, KEY_KPJPCOMMA},
    {virtualkey::Kana, KEY_HANGEUL}, // JIS keyboards made for these key codes send the
    {virtualkey::Eisu, KEY_HANJA},   // Korean language keys, which have the same USB usages
});

template <typename Rows, typename Member>
const Row *rowWith(const Rows &rows, Member member, quint32 value)
{
    const auto row = std::find_if(std::begin(rows), std::end(rows),
                                  [&](const Row &one) { return one.*member == value; });
    return row == std::end(rows) ? nullptr : &*row;
}

bool isOneOf(quint16 key, std::initializer_list<virtualkey::Code> codes)
{
    return std::find(codes.begin(), codes.end(), key) != codes.end();
}

} // namespace

std::optional<quint16> virtualKeyCode(quint32 evdevCode)
{
    const auto *row = rowWith(table, &Row::evdev, evdevCode);
    if (row == nullptr) {
        row = rowWith(alternatives, &Row::evdev, evdevCode);
    }
    return row == nullptr ? std::nullopt : std::optional(row->virtualKey);
}

std::optional<quint32> evdevCode(quint16 virtualKeyCode)
{
    const auto *row = rowWith(table, &Row::virtualKey, virtualKeyCode);
    return row == nullptr ? std::nullopt : std::optional<quint32>(row->evdev);
}

QVector<quint16> virtualKeyCodes()
{
    QVector<quint16> codes;
    for (const auto &row : table) {
        codes << row.virtualKey;
    }
    std::sort(codes.begin(), codes.end());
    return codes;
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
    using namespace virtualkey;
    return isArrowKey(virtualKeyCode) ||
           isOneOf(virtualKeyCode,
                   {F1,  F2,       F3,         F4,  F5,   F6,   F7,     F8,
                    F9,  F10,      F11,        F12, F13,  F14,  F15,    F16,
                    F17, F18,      F19,        F20, Help, Home, PageUp, ForwardDelete,
                    End, PageDown, ContextMenu});
}

bool isModifierKey(quint16 virtualKeyCode)
{
    return virtualKeyCode >= virtualkey::RightCommand && virtualKeyCode <= virtualkey::Function;
}

} // namespace platform
