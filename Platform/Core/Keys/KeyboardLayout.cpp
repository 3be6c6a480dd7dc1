// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/KeyboardLayout.h"

#include "Platform/Core/Keys/KeyPress.h"
#include "Platform/Core/Keys/SpecialKey.h"
#include "Platform/Core/Keys/WaylandKeyboard.h"
#include "Platform/Core/Keys/XKeyboard.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QVarLengthArray>

#include <xkbcommon/xkbcommon.h>

namespace platform {
namespace {

constexpr quint32 evdevOffset = 8; // of XKB's key codes

// What the key has in every layout; null for a key that the layout decides about. Without the
// function-key bit only keys without a character have words.
QString fixedText(quint16 keyCode, quint32 modifiers)
{
    const auto *key = specialKey(keyCode);
    if (key == nullptr) {
        return {};
    }
    const bool byWord = key->layoutCharacter == 0 || (modifiers & keyflags::Function) != 0;
    return key->word != nullptr && byWord ? QString::fromUtf16(key->word)
                                          : QString(QChar(key->layoutCharacter));
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

} // namespace

std::shared_ptr<xkb_keymap> makeKeymap(const std::function<xkb_keymap *(xkb_context *)> &make)
{
    const std::unique_ptr<xkb_context, FreeContext> context(
        ::xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    if (context == nullptr) {
        return nullptr;
    }
    ::xkb_context_set_log_level(context.get(), XKB_LOG_LEVEL_CRITICAL); // the caller tells
    return {make(context.get()), ::xkb_keymap_unref};
}

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
        lastKeymap = makeKeymap([](xkb_context *context) {
            return ::xkb_keymap_new_from_names(context, nullptr, XKB_KEYMAP_COMPILE_NO_FLAGS);
        });
        lastNames = names;
    }
    return lastKeymap == nullptr ? std::nullopt : std::optional(KeyboardLayout(lastKeymap, 0, 0));
}

Status KeyboardLayout::translate(quint16 keyCode, quint32 modifiers, int room, QString &text) const
{
    text.clear();
    if (keyCode >= virtualkey::limit) {
        return Status::Parameter;
    }
    auto characters = fixedText(keyCode, modifiers);
    if (characters.isNull()) {
        characters = layoutText(keyCode, modifiers);
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
    } else if ((modifiers & keyflags::Shift) != 0) {
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
