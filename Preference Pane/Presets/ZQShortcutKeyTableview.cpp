// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/ZQShortcutKeyTableview.h"

#include "Ostrel/OstrelNames.h"
#include "Platform/Core/Keys/KeyPress.h"
#include "Platform/Core/Notifications/NotificationCenter.h"

#include <QKeyEvent>

#include <algorithm>
#include <array>

bool ZQShortcutKeyTableview::keyDown(const QString &characters)
{
    // Backspace, delete, and the function-key characters of forward delete and delete character.
    constexpr std::array<char16_t, 4> deleteCharacters{8, 127, 0xF728, 0xF73E};
    const bool deletes =
        !characters.isEmpty() && std::find(deleteCharacters.begin(), deleteCharacters.end(),
                                           characters[0].unicode()) != deleteCharacters.end();
    if (deletes) {
        platform::NotificationCenter::defaultCenter().post({names::shortcutKeyCleared, {}, {}});
    }
    return deletes;
}

void ZQShortcutKeyTableview::keyPressEvent(QKeyEvent *event)
{
    if (keyDown(platform::KeyPress(*event).charactersIgnoringModifiers())) {
        event->accept();
    } else {
        TableView::keyPressEvent(event);
    }
}
