// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/QtKeyCode.h"

#include "Platform/Core/Keys/VirtualKeyCode.h"

#include <QHash>

namespace platform {
namespace {

using Codes = QHash<int, quint16>;

Codes characterCodes()
{
    // The characters of each virtual key code from 0 on a US keyboard, without and with Shift;
    // those that no character stands for have a space.
    static const auto plain = QStringLiteral("asdfhgzxcv bqweryt123465=97-80]ou[ip lj'k;\\,/nm.");
    static const auto shifted = QStringLiteral("ASDFHGZXCV BQWERYT!@#$^%+(&_*)}OU{IP LJ\"K:|<?NM>");
    Codes codes{{Qt::Key_QuoteLeft, virtualkey::Grave},
                {Qt::Key_AsciiTilde, virtualkey::Grave},
                {Qt::Key_yen, virtualkey::Yen}};
    for (int code = 0; code < plain.size(); ++code) {
        if (plain[code] != QLatin1Char(' ')) {
            codes.insert(plain[code].toUpper().unicode(), static_cast<quint16>(code));
            codes.insert(shifted[code].unicode(), static_cast<quint16>(code));
        }
    }
    return codes;
}

Codes otherCodes()
{
    using namespace virtualkey;
    return {{Qt::Key_Return, Return},
            {Qt::Key_Enter, KeypadEnter},
            {Qt::Key_Tab, Tab},
            {Qt::Key_Backtab, Tab},
            {Qt::Key_Space, Space},
            {Qt::Key_Backspace, Backspace},
            {Qt::Key_Escape, Escape},
            {Qt::Key_Super_R, RightCommand},
            {Qt::Key_Meta, Command},
            {Qt::Key_Super_L, Command},
            {Qt::Key_Shift, Shift},
            {Qt::Key_CapsLock, CapsLock},
            {Qt::Key_Alt, Option},
            {Qt::Key_AltGr, RightOption},
            {Qt::Key_Control, Control},
            {Qt::Key_NumLock, KeypadClear},
            {Qt::Key_Clear, KeypadClear},
            {Qt::Key_VolumeUp, VolumeUp},
            {Qt::Key_VolumeDown, VolumeDown},
            {Qt::Key_VolumeMute, Mute},
            {Qt::Key_Muhenkan, Eisu},
            {Qt::Key_Henkan, Kana},
            {Qt::Key_Menu, ContextMenu},
            {Qt::Key_Help, Help},
            {Qt::Key_Insert, Help},
            {Qt::Key_Home, Home},
            {Qt::Key_PageUp, PageUp},
            {Qt::Key_Delete, ForwardDelete},
            {Qt::Key_End, End},
            {Qt::Key_PageDown, PageDown},
            {Qt::Key_Left, LeftArrow},
            {Qt::Key_Right, RightArrow},
            {Qt::Key_Down, DownArrow},
            {Qt::Key_Up, UpArrow},
            {Qt::Key_F1, F1},
            {Qt::Key_F2, F2},
            {Qt::Key_F3, F3},
            {Qt::Key_F4, F4},
            {Qt::Key_F5, F5},
            {Qt::Key_F6, F6},
            {Qt::Key_F7, F7},
            {Qt::Key_F8, F8},
            {Qt::Key_F9, F9},
            {Qt::Key_F10, F10},
            {Qt::Key_F11, F11},
            {Qt::Key_F12, F12},
            {Qt::Key_F13, F13},
            {Qt::Key_F14, F14},
            {Qt::Key_F15, F15},
            {Qt::Key_F16, F16},
            {Qt::Key_F17, F17},
            {Qt::Key_F18, F18},
            {Qt::Key_F19, F19},
            {Qt::Key_F20, F20}};
}

// With Qt::KeypadModifier; what the keypad means without Num Lock is on the same keys.
Codes keypadCodes()
{
    using namespace virtualkey;
    return {{Qt::Key_0, Keypad0},
            {Qt::Key_Insert, Keypad0},
            {Qt::Key_1, Keypad1},
            {Qt::Key_End, Keypad1},
            {Qt::Key_2, Keypad2},
            {Qt::Key_Down, Keypad2},
            {Qt::Key_3, Keypad3},
            {Qt::Key_PageDown, Keypad3},
            {Qt::Key_4, Keypad4},
            {Qt::Key_Left, Keypad4},
            {Qt::Key_5, Keypad5},
            {Qt::Key_Clear, Keypad5},
            {Qt::Key_6, Keypad6},
            {Qt::Key_Right, Keypad6},
            {Qt::Key_7, Keypad7},
            {Qt::Key_Home, Keypad7},
            {Qt::Key_8, Keypad8},
            {Qt::Key_Up, Keypad8},
            {Qt::Key_9, Keypad9},
            {Qt::Key_PageUp, Keypad9},
            {Qt::Key_Period, KeypadDecimal},
            {Qt::Key_Delete, KeypadDecimal},
            {Qt::Key_Comma, KeypadComma},
            {Qt::Key_Asterisk, KeypadMultiply},
            {Qt::Key_Plus, KeypadPlus},
            {Qt::Key_Minus, KeypadMinus},
            {Qt::Key_Slash, KeypadDivide},
            {Qt::Key_Equal, KeypadEquals}};
}

std::optional<quint16> codeIn(const Codes &codes, int key)
{
    const auto found = codes.constFind(key);
    return found == codes.constEnd() ? std::nullopt : std::optional(found.value());
}

} // namespace

std::optional<quint16> virtualKeyCodeOfQtKey(int key, Qt::KeyboardModifiers modifiers)
{
    static const auto characters = characterCodes();
    static const auto others = otherCodes();
    static const auto keypad = keypadCodes();
    if (modifiers.testFlag(Qt::KeypadModifier)) {
        if (const auto code = codeIn(keypad, key)) {
            return code;
        }
    }
    const auto code = codeIn(others, key);
    return code ? code : codeIn(characters, key);
}

} // namespace platform
