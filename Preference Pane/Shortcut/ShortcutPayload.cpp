// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Shortcut/ShortcutPayload.h"

#include "Ostrel/OstrelNames.h"
#include "Platform/Core/Keys/KeyPress.h"

#include <utility>

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
    const bool isPlain = (modifierFlags & ShortcutModifiers) == 0;
    QVariantMap payload = modifiers(isPlain ? Shift | Command : modifierFlags);
    payload[names::keyCode] = static_cast<int>(keyCode);
    return payload;
}

QString prefixes(quint32 modifierFlags)
{
    QString text;
    for (const auto &[flag, prefix] :
         {std::pair{Control, "Ctrl+"}, {Shift, "Shift+"}, {Option, "Alt+"}, {Command, "Cmd+"}}) {
        text += QLatin1String((modifierFlags & flag) != 0 ? prefix : "");
    }
    return text;
}

} // namespace shortcutPayload
