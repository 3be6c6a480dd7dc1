// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/KeyPress.h"

#include "Platform/Core/Keys/HeldModifiers.h"
#include "Platform/Core/Keys/KeyboardLayout.h"
#include "Platform/Core/Keys/QtKeyCode.h"
#include "Platform/Core/Keys/VirtualKeyCode.h"

#include <QKeyEvent>

#include <array>

namespace platform {
namespace {

constexpr quint32 evdevOffset = 8; // of scan codes
// Real modifiers of XKB, the same in X11 and Wayland.
constexpr quint32 lockMask = 0x2;
constexpr quint32 mod5Mask = 0x80; // the third level
constexpr int room = 255;          // UTF-16 units of a key's text

struct Modifier {
    HeldModifiers::Kind kind;
    Qt::KeyboardModifier qt;
    quint32 flag;
    quint32 left;
    quint32 right;
};

constexpr auto modifiers = std::to_array<Modifier>({
    {HeldModifiers::Kind::Shift, Qt::ShiftModifier, keyflags::Shift, keyflags::LeftShift,
     keyflags::RightShift},
    {HeldModifiers::Kind::Control, Qt::ControlModifier, keyflags::Control, keyflags::LeftControl,
     keyflags::RightControl},
    {HeldModifiers::Kind::Option, Qt::AltModifier, keyflags::Option, keyflags::LeftOption,
     keyflags::RightOption},
    {HeldModifiers::Kind::Command, Qt::MetaModifier, keyflags::Command, keyflags::LeftCommand,
     keyflags::RightCommand},
});

bool isModifierOfQt(int qtKey)
{
    switch (qtKey) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Mode_switch:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
        return true;
    default:
        return false;
    }
}

quint32 flagsOf(const Modifier &modifier, const QKeyEvent &event)
{
    const bool isOption = modifier.kind == HeldModifiers::Kind::Option;
    const bool thirdLevel = isOption && choosesThirdLevel(event);
    const auto sides = HeldModifiers::shared().sides(modifier.kind);
    // The event of a modifier itself may come with the state before or after it.
    const bool ownEvent = isModifierOfQt(event.key()) && (sides.left || sides.right);
    if (!event.modifiers().testFlag(modifier.qt) && !thirdLevel && !ownEvent) {
        return 0;
    }
    if (!sides.left && !sides.right) {
        return modifier.flag | (thirdLevel ? modifier.right : modifier.left);
    }
    return modifier.flag | (sides.left ? modifier.left : 0) | (sides.right ? modifier.right : 0);
}

// U+F700 and following, or the control character of the key; 0 for keys that the layout decides.
char16_t specialCharacter(quint16 keyCode, quint32 flags)
{
    using namespace virtualkey;
    // From U+F700 on.
    static constexpr auto named = std::to_array<quint16>(
        {UpArrow, DownArrow, LeftArrow, RightArrow, F1,  F2,  F3,  F4,  F5,  F6,  F7,  F8,
         F9,      F10,       F11,       F12,        F13, F14, F15, F16, F17, F18, F19, F20});
    char16_t character = 0xF700;
    for (const auto code : named) {
        if (code == keyCode) {
            return character;
        }
        ++character;
    }
    switch (keyCode) {
    case ForwardDelete:
        return 0xF728;
    case Home:
        return 0xF729;
    case End:
        return 0xF72B;
    case PageUp:
        return 0xF72C;
    case PageDown:
        return 0xF72D;
    case ContextMenu:
        return 0xF735;
    case KeypadClear:
        return 0xF739;
    case Help:
        return 0xF746;
    case Return:
        return 0x0D;
    case KeypadEnter:
        return 0x03;
    case Tab:
        return (flags & keyflags::Shift) != 0 ? 0x19 : 0x09;
    case Backspace:
        return 0x7F;
    case Escape:
        return 0x1B;
    default:
        return 0;
    }
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
    for (const auto &modifier : modifiers) {
        m_modifierFlags |= flagsOf(modifier, event);
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
