// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/StatusCode.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

struct xkb_context;
struct xkb_keymap;

namespace platform {

// What make compiles; null where it fails, or where the files of XKB are missing.
std::shared_ptr<xkb_keymap> makeKeymap(const std::function<xkb_keymap *(xkb_context *)> &make);

// What the keys of the session's keyboard mean. Main thread only.
class KeyboardLayout {
public:
    // TISCopyCurrentKeyboardInputSource and its layout data: the session's layout as it is now,
    // with the group that is switched on. Of an X server or a Wayland compositor where the program
    // is connected to one, else that of the variables XKB_DEFAULT_LAYOUT and so on (unset: US).
    // Nothing where there is none. An unchanged layout is asked for in well under a millisecond.
    static std::optional<KeyboardLayout> current();

    // The layout of the variables XKB_DEFAULT_RULES, _MODEL, _LAYOUT, _VARIANT and _OPTIONS.
    static std::optional<KeyboardLayout> ofEnvironment();

    // Group: which of the keymap's layouts is switched on, from 0. Real modifiers: see there.
    KeyboardLayout(std::shared_ptr<xkb_keymap> keymap, quint32 group, quint32 realModifiers)
        : m_keymap(std::move(keymap)), m_group(group), m_realModifiers(realModifiers)
    {
    }

    // XKB's real modifiers that were held or locked when the layout was asked for, as key events
    // have them in nativeModifiers(). None of the environment's layout.
    quint32 realModifiers() const { return m_realModifiers; }

    // UCKeyTranslate, key-down, without dead-key state: the text of a key. Of the modifiers only
    // Shift (0x20000) chooses other characters. The keys of the keypad have their digits whether
    // Num Lock is on or not; keys that move, edit or are called F1 have the control characters that
    // every layout gives them. With the function-key bit (0x800000) F13 to F20 and the keys Delete,
    // Insert and Menu have words instead, as the volume keys always have. A dead key has no
    // characters, and neither has a code that stands for no key. Fails with Parameter for a code of
    // 0x80 or more, and with OutputBufferTooSmall where the text has more UTF-16 units than there
    // is room for.
    Status translate(quint16 keyCode, quint32 modifiers, int room, QString &text) const;

private:
    QString layoutText(quint16 keyCode, quint32 modifiers) const;

    std::shared_ptr<xkb_keymap> m_keymap;
    quint32 m_group;
    quint32 m_realModifiers;
};

} // namespace platform
