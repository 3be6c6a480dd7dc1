// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Keys/VirtualKeyCode.h"

#include <Qt>

#include <array>

namespace platform {

// A key that is the same in every keyboard layout.
struct SpecialKey {
    virtualkey::Code code;
    Qt::Key qtKey; // on a US keyboard; Qt::Key_unknown: another key has it
    // What every layout gives the key; 0: nothing.
    char16_t layoutCharacter;
    // What an event of the key carries, from U+F700 on for keys that move, edit or are called F1;
    // 0: what the layout gives.
    char16_t eventCharacter;
    // What the key is called where nobody would know it by the layout's character. Null for none.
    const char16_t *word = nullptr;
};

inline constexpr auto specialKeys = std::to_array<SpecialKey>({
    {virtualkey::UpArrow, Qt::Key_Up, 0x1E, 0xF700},
    {virtualkey::DownArrow, Qt::Key_Down, 0x1F, 0xF701},
    {virtualkey::LeftArrow, Qt::Key_Left, 0x1C, 0xF702},
    {virtualkey::RightArrow, Qt::Key_Right, 0x1D, 0xF703},
    {virtualkey::F1, Qt::Key_F1, 0x10, 0xF704},
    {virtualkey::F2, Qt::Key_F2, 0x10, 0xF705},
    {virtualkey::F3, Qt::Key_F3, 0x10, 0xF706},
    {virtualkey::F4, Qt::Key_F4, 0x10, 0xF707},
    {virtualkey::F5, Qt::Key_F5, 0x10, 0xF708},
    {virtualkey::F6, Qt::Key_F6, 0x10, 0xF709},
    {virtualkey::F7, Qt::Key_F7, 0x10, 0xF70A},
    {virtualkey::F8, Qt::Key_F8, 0x10, 0xF70B},
    {virtualkey::F9, Qt::Key_F9, 0x10, 0xF70C},
    {virtualkey::F10, Qt::Key_F10, 0x10, 0xF70D},
    {virtualkey::F11, Qt::Key_F11, 0x10, 0xF70E},
    {virtualkey::F12, Qt::Key_F12, 0x10, 0xF70F},
    {virtualkey::F13, Qt::Key_F13, 0x10, 0xF710, u"\uF710"}, // the character has a name
    {virtualkey::F14, Qt::Key_F14, 0x10, 0xF711, u"F14"},
    {virtualkey::F15, Qt::Key_F15, 0x10, 0xF712, u"F15"},
    {virtualkey::F16, Qt::Key_F16, 0x10, 0xF713, u"F16"},
    {virtualkey::F17, Qt::Key_F17, 0x10, 0xF714, u"F17"},
    {virtualkey::F18, Qt::Key_F18, 0x10, 0xF715, u"F18"},
    {virtualkey::F19, Qt::Key_F19, 0x10, 0xF716, u"F19"},
    {virtualkey::F20, Qt::Key_F20, 0x10, 0xF717, u"F20"},
    {virtualkey::ForwardDelete, Qt::Key_Delete, 0x7F, 0xF728, u"Delete"},
    {virtualkey::Home, Qt::Key_Home, 0x01, 0xF729},
    {virtualkey::End, Qt::Key_End, 0x04, 0xF72B},
    {virtualkey::PageUp, Qt::Key_PageUp, 0x0B, 0xF72C},
    {virtualkey::PageDown, Qt::Key_PageDown, 0x0C, 0xF72D},
    {virtualkey::ContextMenu, Qt::Key_Menu, 0x10, 0xF735, u"Menu"},
    {virtualkey::Help, Qt::Key_Insert, 0x05, 0xF746, u"Insert"},
    // Layouts give Clear the character of Escape, as presets expect.
    {virtualkey::KeypadClear, Qt::Key_NumLock, 0x1B, 0xF739},
    {virtualkey::Return, Qt::Key_Return, 0x0D, 0x0D},
    {virtualkey::KeypadEnter, Qt::Key_Enter, 0x03, 0x03},
    {virtualkey::Tab, Qt::Key_Tab, 0x09, 0x09}, // with Shift an event carries 0x19
    {virtualkey::Backspace, Qt::Key_Backspace, 0x08, 0x7F},
    {virtualkey::Escape, Qt::Key_Escape, 0x1B, 0x1B},
    // Linux layouts have a second decimal point there.
    {virtualkey::KeypadComma, Qt::Key_unknown, u',', 0},
    {virtualkey::VolumeUp, Qt::Key_VolumeUp, 0, 0, u"Volume Up"},
    {virtualkey::VolumeDown, Qt::Key_VolumeDown, 0, 0, u"Volume Down"},
    {virtualkey::Mute, Qt::Key_VolumeMute, 0, 0, u"Mute"},
});

// Null for a key that the layout decides about.
constexpr const SpecialKey *specialKey(quint16 code)
{
    for (const auto &key : specialKeys) {
        if (key.code == code) {
            return &key;
        }
    }
    return nullptr;
}

} // namespace platform
