// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Shortcut/ShortcutPayload.h"

#include "Ostrel/OstrelNames.h"
#include "Platform/Core/Keys/KeyPress.h"

namespace shortcutPayload {
namespace {

using namespace platform::keyflags;

QVariantMap modifiers(quint32 flags)
{
    return {{QStringLiteral("shift"), (flags & Shift) != 0},
            {QStringLiteral("ctrl"), (flags & Control) != 0},
            {QStringLiteral("opt"), (flags & Option) != 0},
            {QStringLiteral("cmd"), (flags & Command) != 0}};
}

} // namespace

QVariantMap ofSheet(quint16 keyCode, quint32 modifierFlags)
{
    QVariantMap payload = modifiers(modifierFlags);
    payload[names::keyCode] = static_cast<uint>(keyCode);
    payload[names::modifierFlags] = static_cast<uint>(modifierFlags);
    return payload;
}

QVariantMap ofFieldEditor(quint16 keyCode, quint32 modifierFlags)
{
    constexpr quint32 any = Shift | Control | Option | Command;
    QVariantMap payload = modifiers((modifierFlags & any) == 0 ? Shift | Command : modifierFlags);
    payload[names::keyCode] = static_cast<int>(keyCode);
    return payload;
}

} // namespace shortcutPayload
