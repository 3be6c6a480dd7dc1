// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/KeyboardLayout.h"

#include "Platform/Core/Keys/VirtualKeyCode.h"
#include "Platform/Core/Keys/WaylandKeyboard.h"
#include "Platform/Core/Keys/XKeyboard.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QVarLengthArray>

#include <xkbcommon/xkbcommon.h>

namespace platform {
namespace {

constexpr quint32 shiftFlag = 0x20000;
constexpr quint32 functionFlag = 0x800000;
constexpr quint32 evdevOffset = 8; // of XKB's key codes

// The characters of the keys that are the same in every layout; 0 for the other keys.
char16_t fixedCharacter(quint16 keyCode)
{
    switch (keyCode) {
    case virtualkey::Return:
        return 0x0D;
    case virtualkey::KeypadEnter:
        return 0x03;
    case virtualkey::Tab:
        return 0x09;
    case virtualkey::Backspace:
        return 0x08;
    case virtualkey::ForwardDelete:
        return 0x7F;
    case virtualkey::Escape:
    case virtualkey::KeypadClear: // kept on purpose: layouts give Clear the character of Escape
        return 0x1B;
    case virtualkey::Help:
        return 0x05;
    case virtualkey::Home:
        return 0x01;
    case virtualkey::End:
        return 0x04;
    case virtualkey::PageUp:
        return 0x0B;
    case virtualkey::PageDown:
        return 0x0C;
    case virtualkey::LeftArrow:
        return 0x1C;
    case virtualkey::RightArrow:
        return 0x1D;
    case virtualkey::UpArrow:
        return 0x1E;
    case virtualkey::DownArrow:
        return 0x1F;
    case virtualkey::KeypadComma: // Linux layouts have a second decimal point there
        return u',';
    default:
        return isFunctionKey(keyCode) ? 0x10 : 0; // what is left are F1 to F20 and the menu key
    }
}

// Words for the keys that nobody would know by what layouts have for them: one control character
// for all of F13 to F20, or nothing. Null for the other keys.
QString fixedWord(quint16 keyCode, quint32 modifiers)
{
    switch (keyCode) {
    case virtualkey::VolumeUp:
        return QStringLiteral("Volume Up");
    case virtualkey::VolumeDown:
        return QStringLiteral("Volume Down");
    case virtualkey::Mute:
        return QStringLiteral("Mute");
    default:
        break;
    }
    if ((modifiers & functionFlag) == 0) {
        return {};
    }
    switch (keyCode) {
    case virtualkey::F13:
        return QChar(0xF710); // the function-key character
    case virtualkey::F14:
        return QStringLiteral("F14");
    case virtualkey::F15:
        return QStringLiteral("F15");
    case virtualkey::F16:
        return QStringLiteral("F16");
    case virtualkey::F17:
        return QStringLiteral("F17");
    case virtualkey::F18:
        return QStringLiteral("F18");
    case virtualkey::F19:
        return QStringLiteral("F19");
    case virtualkey::F20:
        return QStringLiteral("F20");
    case virtualkey::ForwardDelete:
        return QStringLiteral("Delete");
    case virtualkey::Help:
        return QStringLiteral("Insert");
    case virtualkey::ContextMenu:
        return QStringLiteral("Menu");
    default:
        return {};
    }
}

xkb_mod_mask_t maskOf(xkb_keymap *keymap, const char *modifier)
{
    const auto index = ::xkb_keymap_mod_get_index(keymap, modifier);
    return index == XKB_MOD_INVALID ? 0 : xkb_mod_mask_t{1} << index;
}

struct FreeContext {
    void operator()(xkb_context *context) const { ::xkb_context_unref(context); }
};

struct FreeState {
    void operator()(xkb_state *state) const { ::xkb_state_unref(state); }
};

std::shared_ptr<xkb_keymap> keymapOfEnvironment()
{
    const std::unique_ptr<xkb_context, FreeContext> context(
        ::xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    if (context == nullptr) {
        return nullptr;
    }
    ::xkb_context_set_log_level(context.get(), XKB_LOG_LEVEL_CRITICAL); // the caller tells
    auto *keymap = ::xkb_keymap_new_from_names(context.get(), nullptr, XKB_KEYMAP_COMPILE_NO_FLAGS);
    return keymap == nullptr ? nullptr : std::shared_ptr<xkb_keymap>(keymap, ::xkb_keymap_unref);
}

} // namespace

std::optional<KeyboardLayout> KeyboardLayout::current()
{
    const auto name = QGuiApplication::platformName();
    if (name == QLatin1String("xcb")) {
        return XKeyboard::shared().layout();
    }
    if (name.startsWith(QLatin1String("wayland"))) {
        if (auto layout = waylandKeyboardLayout()) {
            return layout;
        }
    }
    return ofEnvironment();
}

std::optional<KeyboardLayout> KeyboardLayout::ofEnvironment()
{
    // Compiling a keymap takes milliseconds.
    static QByteArray lastNames;
    static std::shared_ptr<xkb_keymap> lastKeymap;
    QByteArray names;
    for (const auto *variable : {"XKB_DEFAULT_RULES", "XKB_DEFAULT_MODEL", "XKB_DEFAULT_LAYOUT",
                                 "XKB_DEFAULT_VARIANT", "XKB_DEFAULT_OPTIONS"}) {
        names += qgetenv(variable) + '\n';
    }
    if (lastKeymap == nullptr || names != lastNames) {
        lastKeymap = keymapOfEnvironment();
        lastNames = names;
    }
    return lastKeymap == nullptr ? std::nullopt : std::optional(KeyboardLayout(lastKeymap, 0));
}

Status KeyboardLayout::translate(quint16 keyCode, quint32 modifiers, int room, QString &text) const
{
    text.clear();
    if (keyCode >= virtualkey::limit) {
        return Status::Parameter;
    }
    auto characters = fixedWord(keyCode, modifiers);
    if (characters.isNull()) {
        const auto fixed = fixedCharacter(keyCode);
        characters = fixed != 0 ? QString(QChar(fixed)) : layoutText(keyCode, modifiers);
    }
    if (characters.size() > room) {
        return Status::OutputBufferTooSmall;
    }
    text = characters;
    return Status::NoError;
}

QString KeyboardLayout::layoutText(quint16 keyCode, quint32 modifiers) const
{
    const auto evdev = evdevCode(keyCode);
    if (!evdev || isModifierKey(keyCode)) {
        return {};
    }
    const std::unique_ptr<xkb_state, FreeState> state(::xkb_state_new(m_keymap.get()));
    if (state == nullptr) {
        return {};
    }
    xkb_mod_mask_t mask = 0;
    if (isKeypadKey(keyCode)) {
        mask = maskOf(m_keymap.get(), XKB_MOD_NAME_NUM);
    } else if ((modifiers & shiftFlag) != 0) {
        mask = maskOf(m_keymap.get(), XKB_MOD_NAME_SHIFT);
    }
    ::xkb_state_update_mask(state.get(), mask, 0, 0, 0, 0, m_group);
    const auto key = *evdev + evdevOffset;
    const auto size = ::xkb_state_key_get_utf8(state.get(), key, nullptr, 0);
    if (size <= 0) {
        return {};
    }
    QVarLengthArray<char, 64> bytes(size + 1);
    ::xkb_state_key_get_utf8(state.get(), key, bytes.data(), static_cast<std::size_t>(size) + 1);
    return QString::fromUtf8(bytes.constData(), size);
}

} // namespace platform
