// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bundles/Bundle.h"
#include "Platform/Core/Keys/KeyboardLayout.h"
#include "Platform/Core/Text/Console.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"

#include <array>

namespace {

constexpr quint32 shiftFlag = 0x20000;
constexpr quint32 controlFlag = 0x40000;
constexpr quint32 optionFlag = 0x80000;
constexpr quint32 commandFlag = 0x100000;
constexpr quint32 functionFlag = 0x800000;

constexpr int room = 255; // UTF-16 units of a key's text

struct Glyph {
    quint16 value;
    const char *name;
};

// "Return" and "Enter" stand at each other's values, kept on purpose.
constexpr std::array<Glyph, 10> characters{{{0x0003, "Return"},
                                            {0x0009, "Tab"},
                                            {0x0019, "Backtab"},
                                            {0x000D, "Enter"},
                                            {0x0008, "Backspace"},
                                            {0x007F, "Delete"},
                                            {0x001B, "Escape"},
                                            {0x0020, "Space"},
                                            {0xF700, "Up Arrow"},
                                            {0xF701, "Down Arrow"}}};
// Kept on purpose: the last row is never found.
constexpr std::size_t searchedCharacters = 9;

// First the values that events give such keys, then what keyboard layouts give the arrows and the
// navigation keys, and the key codes of F1 to F12. F13 twice and the empty last row are kept on
// purpose.
constexpr std::array<Glyph, 43> functionKeys{{{0xF700, "Up Arrow"},
                                              {0xF701, "Down Arrow"},
                                              {0xF702, "Left Arrow"},
                                              {0xF703, "Right Arrow"},
                                              {0xF729, "Home"},
                                              {0xF72B, "End"},
                                              {0xF72C, "Page Up"},
                                              {0xF72D, "Page Down"},
                                              {0xF704, "F1"},
                                              {0xF705, "F2"},
                                              {0xF706, "F3"},
                                              {0xF707, "F4"},
                                              {0xF708, "F5"},
                                              {0xF709, "F6"},
                                              {0xF70A, "F7"},
                                              {0xF70B, "F8"},
                                              {0xF70C, "F9"},
                                              {0xF70D, "F10"},
                                              {0xF70E, "F11"},
                                              {0xF70F, "F12"},
                                              {0xF710, "F13"},
                                              {0x1E, "Up Arrow"},
                                              {0x1F, "Down Arrow"},
                                              {0x1C, "Left Arrow"},
                                              {0x1D, "Right Arrow"},
                                              {0x01, "Home"},
                                              {0x04, "End"},
                                              {0x0B, "Page Up"},
                                              {0x0C, "Page Down"},
                                              {0x7A, "F1"},
                                              {0x78, "F2"},
                                              {0x63, "F3"},
                                              {0x76, "F4"},
                                              {0x60, "F5"},
                                              {0x61, "F6"},
                                              {0x62, "F7"},
                                              {0x64, "F8"},
                                              {0x65, "F9"},
                                              {0x6D, "F10"},
                                              {0x67, "F11"},
                                              {0x6F, "F12"},
                                              {0xF710, "F13"},
                                              {0, nullptr}}};

const Glyph *namedCharacter(quint16 character)
{
    for (std::size_t row = 0; row < searchedCharacters; ++row) {
        if (characters.at(row).value == character) {
            return &characters.at(row);
        }
    }
    return nullptr;
}

const Glyph *namedFunctionKey(quint16 character, quint16 keyCode)
{
    for (const auto &row : functionKeys) {
        if (row.value == character || row.value == keyCode) {
            return &row;
        }
    }
    return nullptr;
}

QString nameOf(const Glyph &glyph)
{
    return glyph.name == nullptr ? QStringLiteral("(null)")
                                 : platform::Bundle::main().localizedString(
                                       QString::fromLatin1(glyph.name), QString());
}

// The characters of a key; null, with a line on the console, where there are none.
QString translated(const platform::KeyboardLayout &layout, quint16 keyCode, quint32 modifierFlags)
{
    // Kept on purpose: no modifier reaches the layout, so that the key's plain character comes out.
    QString text;
    const auto status = layout.translate(keyCode, modifierFlags & functionFlag, room, text);
    if (status != platform::Status::NoError) {
        // Kept on purpose: the status stands where the text speaks of a key code.
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
    const auto flags = static_cast<quint32>(modifiers.toLongLong());
    QString name;
    if ((flags & controlFlag) != 0) {
        name += QStringLiteral("Ctrl+");
    }
    if ((flags & shiftFlag) != 0) {
        name += QStringLiteral("Shift+");
    }
    if ((flags & optionFlag) != 0) {
        name += QStringLiteral("Alt+");
    }
    if ((flags & commandFlag) != 0) {
        name += QStringLiteral("Cmd+");
    }
    auto key = stringForKeyCode(static_cast<quint16>(keyCode.toLongLong()), flags);
    if (key.size() == 1) {
        key = key.toUpper();
    }
    return name + platform::format(QStringLiteral("%@"), key);
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
    const Glyph *glyph = nullptr;
    if ((modifierFlags & functionFlag) == 0) {
        platform::consoleLine(QStringLiteral("no modifier set"));
        glyph = namedCharacter(first);
    } else {
        platform::consoleLine(QStringLiteral("modifier set"));
        glyph = namedFunctionKey(first, keyCode);
    }
    if (glyph == nullptr) {
        platform::consoleLine(QStringLiteral("not found in glyph map"));
        return text;
    }
    return nameOf(*glyph);
}
