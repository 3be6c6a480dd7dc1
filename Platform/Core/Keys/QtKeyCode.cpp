// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/QtKeyCode.h"

#include "Platform/Core/Keys/SpecialKey.h"

#include <QHash>

#include <array>

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
    Codes codes{
        {Qt::Key_Backtab, Tab},       {Qt::Key_Space, Space},       {Qt::Key_Super_R, RightCommand},
        {Qt::Key_Meta, Command},      {Qt::Key_Super_L, Command},   {Qt::Key_Shift, Shift},
        {Qt::Key_CapsLock, CapsLock}, {Qt::Key_Alt, Option},        {Qt::Key_AltGr, RightOption},
        {Qt::Key_Control, Control},   {Qt::Key_Clear, KeypadClear}, {Qt::Key_Muhenkan, Eisu},
        {Qt::Key_Henkan, Kana},       {Qt::Key_Help, Help},         {Qt::Key_Print, F13},
        {Qt::Key_SysReq, F13}};
    for (const auto &key : specialKeys) {
        codes.insert(key.qtKey, key.code);
    }
    codes.remove(Qt::Key_unknown);
    return codes;
}

// With Qt::KeypadModifier; what the keypad means without Num Lock is on the same keys.
Codes keypadCodes()
{
    using namespace virtualkey;
    static constexpr std::array digits{Keypad0, Keypad1, Keypad2, Keypad3, Keypad4,
                                       Keypad5, Keypad6, Keypad7, Keypad8, Keypad9};
    static constexpr std::array withoutNumLock{
        Qt::Key_Insert, Qt::Key_End,   Qt::Key_Down, Qt::Key_PageDown, Qt::Key_Left,
        Qt::Key_Clear,  Qt::Key_Right, Qt::Key_Home, Qt::Key_Up,       Qt::Key_PageUp};
    Codes codes{{Qt::Key_Period, KeypadDecimal}, {Qt::Key_Delete, KeypadDecimal},
                {Qt::Key_Comma, KeypadComma},    {Qt::Key_Asterisk, KeypadMultiply},
                {Qt::Key_Plus, KeypadPlus},      {Qt::Key_Minus, KeypadMinus},
                {Qt::Key_Slash, KeypadDivide},   {Qt::Key_Equal, KeypadEquals}};
    for (std::size_t digit = 0; digit < digits.size(); ++digit) {
        codes.insert(Qt::Key_0 + static_cast<int>(digit), digits.at(digit));
        codes.insert(withoutNumLock.at(digit), digits.at(digit));
    }
    return codes;
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
