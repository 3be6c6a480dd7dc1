// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/HeldModifiers.h"

#include "Platform/Core/Keys/KeyPress.h"

#include <QGuiApplication>
#include <QKeyEvent>

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>

namespace platform {
namespace {

bool isRightPlace(std::optional<quint16> virtualKey)
{
    return std::any_of(modifierKeys.begin(), modifierKeys.end(),
                       [&](const ModifierKey &key) { return key.rightCode == virtualKey; });
}

// The layout may give a key on one side the modifier of the other.
bool isRight(const QKeyEvent &event)
{
    switch (event.nativeVirtualKey()) {
    case XKB_KEY_Shift_R:
    case XKB_KEY_Control_R:
    case XKB_KEY_Alt_R:
    case XKB_KEY_Meta_R:
    case XKB_KEY_Super_R:
        return true;
    case XKB_KEY_Shift_L:
    case XKB_KEY_Control_L:
    case XKB_KEY_Alt_L:
    case XKB_KEY_Meta_L:
    case XKB_KEY_Super_L:
        return false;
    default:
        return isRightPlace(virtualKeyCodeOf(event)) || event.key() == Qt::Key_AltGr ||
               event.key() == Qt::Key_Super_R;
    }
}

quint32 identityOf(const QKeyEvent &event)
{
    return event.nativeScanCode() != 0 ? event.nativeScanCode() : static_cast<quint32>(event.key());
}

} // namespace

HeldModifiers &HeldModifiers::shared()
{
    static HeldModifiers modifiers;
    return modifiers;
}

HeldModifiers::HeldModifiers()
{
    qGuiApp->installEventFilter(this);
}

HeldModifiers::Sides HeldModifiers::sides(Qt::KeyboardModifier modifier) const
{
    Sides sides{false, false};
    for (const auto &held : m_held) {
        if (held.modifier == modifier) {
            (held.right ? sides.right : sides.left) = true;
        }
    }
    return sides;
}

bool HeldModifiers::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        pressed(*static_cast<QKeyEvent *>(event));
        break;
    case QEvent::KeyRelease:
        released(*static_cast<QKeyEvent *>(event));
        break;
    case QEvent::ApplicationStateChange:
        if (QGuiApplication::applicationState() != Qt::ApplicationActive) {
            m_held.clear(); // releases go to other programs from now on
        }
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void HeldModifiers::pressed(const QKeyEvent &event)
{
    const auto modifier = modifierOf(event);
    if (modifier == Qt::NoModifier) {
        dropReleased(event);
        return;
    }
    released(event); // at most once in the list
    m_held << Held{identityOf(event), modifier, isRight(event)};
}

void HeldModifiers::released(const QKeyEvent &event)
{
    const auto key = identityOf(event);
    m_held.erase(std::remove_if(m_held.begin(), m_held.end(),
                                [key](const Held &held) { return held.key == key; }),
                 m_held.end());
}

void HeldModifiers::dropReleased(const QKeyEvent &event)
{
    m_held.erase(
        std::remove_if(m_held.begin(), m_held.end(),
                       [&event](const Held &held) { return !hasModifier(event, held.modifier); }),
        m_held.end());
}

} // namespace platform
