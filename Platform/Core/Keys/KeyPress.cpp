// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/KeyPress.h"

#include "Platform/Core/Keys/HeldModifiers.h"
#include "Platform/Core/Keys/KeyboardLayout.h"
#include "Platform/Core/Keys/QtKeyCode.h"
#include "Platform/Core/Keys/SpecialKey.h"

#include <QGuiApplication>
#include <QKeyEvent>

#include <xkbcommon/xkbcommon-keysyms.h>

namespace platform {
namespace {

constexpr quint32 evdevOffset = 8; // of scan codes
// Real modifiers of XKB, the same in X11 and Wayland.
constexpr quint32 lockMask = 0x2;
constexpr quint32 mod5Mask = 0x80; // the third level
constexpr int room = 255;          // UTF-16 units of a key's text

Qt::KeyboardModifier modifierOfQtKey(int key)
{
    switch (key) {
    case Qt::Key_Shift:
        return Qt::ShiftModifier;
    case Qt::Key_Control:
        return Qt::ControlModifier;
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Mode_switch:
        return Qt::AltModifier;
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
        return Qt::MetaModifier;
    default:
        return Qt::NoModifier;
    }
}

bool isModifierOfQt(int qtKey)
{
    return modifierOfQtKey(qtKey) != Qt::NoModifier || qtKey == Qt::Key_Hyper_L ||
           qtKey == Qt::Key_Hyper_R || qtKey == Qt::Key_CapsLock;
}

quint32 flagsOf(const ModifierKey &key, const QKeyEvent &event)
{
    const auto sides = HeldModifiers::shared().sides(key.modifier);
    // The event of the modifier itself may come with the state before or after it.
    const bool isOn = modifierOf(event) == key.modifier
                          ? event.type() == QEvent::KeyPress || sides.left || sides.right
                          : hasModifier(event, key.modifier);
    if (!isOn) {
        return 0;
    }
    if (!sides.left && !sides.right) {
        const bool isAltGr = key.modifier == Qt::AltModifier && choosesThirdLevel(event);
        return key.flag | (isAltGr ? key.rightFlag : key.leftFlag);
    }
    return key.flag | (sides.left ? key.leftFlag : 0) | (sides.right ? key.rightFlag : 0);
}

// U+F700 and following, or the control character of the key; 0 for keys that the layout decides.
char16_t specialCharacter(quint16 keyCode, quint32 flags)
{
    constexpr char16_t backTab = 0x19;
    if (keyCode == virtualkey::Tab && (flags & keyflags::Shift) != 0) {
        return backTab;
    }
    const auto *key = specialKey(keyCode);
    return key == nullptr ? char16_t(0) : key->eventCharacter;
}

bool isPrintable(const QString &text)
{
    return !text.isEmpty() && text.front() >= QLatin1Char(' ') && text.front() != QChar(0x7F);
}

} // namespace

std::optional<quint16> virtualKeyCodeOf(const QKeyEvent &event)
{
    const auto scanCode = event.nativeScanCode();
    const auto place =
        scanCode > evdevOffset ? virtualKeyCode(scanCode - evdevOffset) : std::nullopt;
    const auto meaning = virtualKeyCodeOfQtKey(event.key(), event.modifiers());
    if (!place) {
        return meaning;
    }
    // Whoever makes an Escape key of Caps Lock means Escape.
    const bool remade = isModifierKey(*place) && meaning && !isModifierKey(*meaning);
    return remade ? meaning : place;
}

Qt::KeyboardModifier modifierOf(const QKeyEvent &event)
{
    // With Shift, layouts call the Alt keys Meta; what they hold is Alt all the same.
    const auto keysym = event.nativeVirtualKey();
    const auto code = virtualKeyCodeOf(event);
    const bool isAlt = (keysym == XKB_KEY_Meta_L || keysym == XKB_KEY_Meta_R) &&
                       (code == virtualkey::Option || code == virtualkey::RightOption);
    return isAlt ? Qt::AltModifier : modifierOfQtKey(event.key());
}

quint32 heldModifierFlags()
{
    const auto layout = KeyboardLayout::current();
    const QKeyEvent event(QEvent::KeyRelease, Qt::Key_unknown,
                          QGuiApplication::queryKeyboardModifiers(), 0, 0,
                          layout ? layout->realModifiers() : 0);
    return KeyPress(event).modifierFlags();
}

bool hasModifier(const QKeyEvent &event, Qt::KeyboardModifier modifier)
{
    auto modifiers = event.modifiers();
    // Qt turns the modifier over that the key is called after: here Meta, for an Alt key.
    if (event.key() == Qt::Key_Meta && modifierOf(event) == Qt::AltModifier) {
        modifiers ^= Qt::MetaModifier;
    }
    return (modifiers & modifier) != 0 || (modifier == Qt::AltModifier && choosesThirdLevel(event));
}

bool choosesThirdLevel(const QKeyEvent &event)
{
    return event.modifiers().testFlag(Qt::GroupSwitchModifier) ||
           (event.nativeModifiers() & mod5Mask) != 0;
}

KeyPress::KeyPress(const QKeyEvent &event)
    : m_keyCode(virtualKeyCodeOf(event)),
      m_isModifierKey(isModifierOfQt(event.key()) ||
                      (m_keyCode && platform::isModifierKey(*m_keyCode))),
      m_modifierFlags(keyflags::Keyboard), m_isFromKeyboard(event.nativeScanCode() != 0),
      m_qtKey(event.key()), m_text(event.text())
{
    for (const auto &key : modifierKeys) {
        m_modifierFlags |= flagsOf(key, event);
    }
    if ((event.nativeModifiers() & lockMask) != 0) {
        m_modifierFlags |= keyflags::CapsLock;
    }
    if (m_keyCode && (isKeypadKey(*m_keyCode) || isArrowKey(*m_keyCode))) {
        m_modifierFlags |= keyflags::NumericPad;
    }
    if (m_keyCode && isFunctionKey(*m_keyCode)) {
        m_modifierFlags |= keyflags::Function;
    }
}

std::optional<quint16> KeyPress::shortcutKeyCode() const
{
    const bool isShortcut = m_keyCode && !m_isModifierKey && !isInputModeKey(*m_keyCode);
    return isShortcut ? m_keyCode : std::nullopt;
}

QString KeyPress::charactersIgnoringModifiers() const
{
    if (m_keyCode) {
        if (const auto special = specialCharacter(*m_keyCode, m_modifierFlags)) {
            return {QChar(special)};
        }
        // With Control or Alt the event's own text is another or none.
        const auto layout = m_isFromKeyboard ? KeyboardLayout::current() : std::nullopt;
        QString text;
        if (layout && layout->translate(*m_keyCode, m_modifierFlags & keyflags::Shift, room,
                                        text) == Status::NoError) {
            return text;
        }
    }
    QString text = m_text;
    if (!isPrintable(text)) {
        if (m_qtKey < Qt::Key_Space || m_qtKey >= Qt::Key_Escape) {
            return {};
        }
        text = QString(QChar(static_cast<char16_t>(m_qtKey))).toLower();
    }
    return (m_modifierFlags & keyflags::Shift) != 0 ? text.toUpper() : text;
}

} // namespace platform
