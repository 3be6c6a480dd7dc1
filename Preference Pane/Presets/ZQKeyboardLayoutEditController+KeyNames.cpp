// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bundles/Bundle.h"
#include "Platform/Core/Keys/KeyPress.h"
#include "Platform/Core/Keys/KeyboardLayout.h"
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Text/LeadingInteger.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Preference Pane/Shortcut/ShortcutPayload.h"

#include <array>
#include <optional>

namespace {

using platform::keyflags::Function;

constexpr int room = 255; // UTF-16 units of a key's text

struct NamedCharacter {
    char16_t value;
    const char *name;
};

// "Return" and "Enter" stand at each other's values, and "Down Arrow" (0xF701) is not among them,
// because presets have such names.
constexpr auto namedCharacters = std::to_array<NamedCharacter>({{0x0003, "Return"},
                                                                {0x0009, "Tab"},
                                                                {0x0019, "Backtab"},
                                                                {0x000D, "Enter"},
                                                                {0x0008, "Backspace"},
                                                                {0x007F, "Delete"},
                                                                {0x001B, "Escape"},
                                                                {0x0020, "Space"},
                                                                {0xF700, "Up Arrow"}});

// The rows of the table of function keys have these names twice over.
constexpr auto functionKeyNames = std::to_array<const char *>(
    {"Up Arrow",  "Down Arrow", "Left Arrow", "Right Arrow", "Home", "End", "Page Up",
     "Page Down", "F1",         "F2",         "F3",          "F4",   "F5",  "F6",
     "F7",        "F8",         "F9",         "F10",         "F11",  "F12", "F13"});

// First the values that events give such keys, then what keyboard layouts give the arrows and the
// navigation keys, and the key codes of F1 to F12; F13 has the same value in both.
constexpr auto functionKeyValues = std::to_array<quint16>(
    {0xF700, 0xF701, 0xF702, 0xF703, 0xF729, 0xF72B, 0xF72C, 0xF72D, 0xF704, 0xF705, 0xF706,
     0xF707, 0xF708, 0xF709, 0xF70A, 0xF70B, 0xF70C, 0xF70D, 0xF70E, 0xF70F, 0xF710, 0x1E,
     0x1F,   0x1C,   0x1D,   0x01,   0x04,   0x0B,   0x0C,   0x7A,   0x78,   0x63,   0x76,
     0x60,   0x61,   0x62,   0x64,   0x65,   0x6D,   0x67,   0x6F,   0xF710});

QString localized(const char *name)
{
    return platform::Bundle::main().localizedString(QString::fromLatin1(name), QString());
}

std::optional<QString> nameOfCharacter(quint16 character)
{
    for (const auto &row : namedCharacters) {
        if (row.value == character) {
            return localized(row.name);
        }
    }
    return std::nullopt;
}

std::optional<QString> nameOfFunctionKey(quint16 character, quint16 keyCode)
{
    for (std::size_t row = 0; row < functionKeyValues.size(); ++row) {
        if (functionKeyValues.at(row) == character || functionKeyValues.at(row) == keyCode) {
            return localized(functionKeyNames.at(row % functionKeyNames.size()));
        }
    }
    // The table's last row has the value 0 and no name.
    return character == 0 || keyCode == 0 ? std::optional(QStringLiteral("(null)")) : std::nullopt;
}

// The characters of a key; null, with a line on the console, where there are none.
QString translated(const platform::KeyboardLayout &layout, quint16 keyCode, quint32 modifierFlags)
{
    // No modifier reaches the layout, so that people read the key's plain character.
    QString text;
    const auto status = layout.translate(keyCode, modifierFlags & Function, room, text);
    if (status != platform::Status::NoError) {
        // The status stands where the text speaks of a key code: support looks for it there.
        platform::consoleLog(
            QStringLiteral("There was an %s error translating from the '%d' key code to a human "
                           "readable string: %s"),
            platform::statusName(status), status, platform::statusComment(status));
        return {};
    }
    if (text.isEmpty()) {
        platform::consoleLog(QStringLiteral("Couldn't find a translation for the '%d' key code"),
                             keyCode);
        return {};
    }
    return text;
}

} // namespace

QString ZQKeyboardLayoutEditController::nameForKeyCode(const QVariant &keyCode,
                                                       const QVariant &modifiers)
{
    const auto flags = static_cast<quint32>(platform::leadingInteger(modifiers));
    auto key = stringForKeyCode(static_cast<quint16>(platform::leadingInteger(keyCode)), flags);
    if (key.size() == 1) {
        key = key.toUpper();
    }
    return shortcutPayload::prefixes(flags) + platform::format(QStringLiteral("%@"), key);
}

QString ZQKeyboardLayoutEditController::stringForKeyCode(quint16 keyCode, quint32 modifierFlags)
{
    const auto layout = platform::KeyboardLayout::current();
    // To the system console alone: what was pressed must never get into a log that support reads.
    platform::consoleLog(QStringLiteral("keycode: %u"), keyCode);
    if (!layout) {
        platform::consoleLine(
            QStringLiteral("Couldn't find a suitable keyboard layout from which to translate"));
        return {};
    }
    auto text = translated(*layout, keyCode, modifierFlags);
    if (text.isNull()) {
        return {};
    }
    const auto first = text.at(0).unicode();
    const bool isFunction = (modifierFlags & Function) != 0;
    platform::consoleLine(isFunction ? QStringLiteral("modifier set")
                                     : QStringLiteral("no modifier set"));
    const auto name = isFunction ? nameOfFunctionKey(first, keyCode) : nameOfCharacter(first);
    if (name) {
        return *name;
    }
    platform::consoleLine(QStringLiteral("not found in glyph map"));
    return text;
}
