// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/HeldModifiers.h"

#include "Platform/Core/Keys/KeyPress.h"
#include "Platform/Core/Keys/VirtualKeyCode.h"

#include <QGuiApplication>
#include <QKeyEvent>

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>

namespace platform {
namespace {

using Kind = HeldModifiers::Kind;

Kind kindOf(int qtKey)
{
    switch (qtKey) {
    case Qt::Key_Shift:
        return Kind::Shift;
    case Qt::Key_Control:
        return Kind::Control;
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Mode_switch:
        return Kind::Option;
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
        return Kind::Command;
    default:
        return Kind::None;
    }
}

Kind kindAt(quint16 virtualKey)
{
    switch (virtualKey) {
    case virtualkey::Shift:
    case virtualkey::RightShift:
        return Kind::Shift;
    case virtualkey::Control:
    case virtualkey::RightControl:
        return Kind::Control;
    case virtualkey::Option:
    case virtualkey::RightOption:
        return Kind::Option;
    case virtualkey::Command:
    case virtualkey::RightCommand:
        return Kind::Command;
    default:
        return Kind::None;
    }
}

bool isRightPlace(quint16 virtualKey)
{
    return virtualKey == virtualkey::RightShift || virtualKey == virtualkey::RightControl ||
           virtualKey == virtualkey::RightOption || virtualKey == virtualkey::RightCommand;
}

// The layout may give a key on one side the modifier of the other.
bool isRight(const QKeyEvent &event, quint16 virtualKey)
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
        return isRightPlace(virtualKey) || event.key() == Qt::Key_AltGr ||
               event.key() == Qt::Key_Super_R;
    }
}

quint32 identityOf(const QKeyEvent &event)
{
    return event.nativeScanCode() != 0 ? event.nativeScanCode() : static_cast<quint32>(event.key());
}

bool isOn(const QKeyEvent &event, Kind kind)
{
    const auto modifiers = event.modifiers();
    switch (kind) {
    case Kind::Shift:
        return modifiers.testFlag(Qt::ShiftModifier);
    case Kind::Control:
        return modifiers.testFlag(Qt::ControlModifier);
    case Kind::Option:
        return modifiers.testFlag(Qt::AltModifier) || choosesThirdLevel(event);
    case Kind::Command:
        return modifiers.testFlag(Qt::MetaModifier);
    case Kind::None:
        break;
    }
    return false;
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

HeldModifiers::Sides HeldModifiers::sides(Kind kind) const
{
    // Where Shift turns Alt into Meta, Alt is on and Meta is what went down: then the place tells.
    for (const auto member : {&Held::meaning, &Held::place}) {
        Sides sides{false, false};
        for (const auto &held : m_held) {
            if (held.*member == kind) {
                (held.right ? sides.right : sides.left) = true;
            }
        }
        if (sides.left || sides.right) {
            return sides;
        }
    }
    return {false, false};
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
    const auto virtualKey = virtualKeyCodeOf(event).value_or(virtualkey::limit);
    const auto meaning = kindOf(event.key());
    if (meaning == Kind::None) {
        forgetAllBut(event);
        return;
    }
    released(event); // at most once in the list
    m_held << Held{identityOf(event), meaning, kindAt(virtualKey), isRight(event, virtualKey)};
}

void HeldModifiers::released(const QKeyEvent &event)
{
    const auto key = identityOf(event);
    m_held.erase(std::remove_if(m_held.begin(), m_held.end(),
                                [key](const Held &held) { return held.key == key; }),
                 m_held.end());
}

void HeldModifiers::forgetAllBut(const QKeyEvent &event)
{
    m_held.erase(std::remove_if(m_held.begin(), m_held.end(),
                                [&event](const Held &held) {
                                    return !isOn(event, held.meaning) && !isOn(event, held.place);
                                }),
                 m_held.end());
}

} // namespace platform
