// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Pane/RunningActions.h"

bool RunningActions::begin(QPushButton *button)
{
    if (m_actions.contains(button)) {
        return false;
    }
    auto *const window = button->window();
    const auto hadFocus = button == window->focusWidget();
    const auto wasEnabled = button->isEnabled();
    button->setEnabled(false);
    m_actions.insert(button, {wasEnabled, hadFocus ? window->focusWidget() : nullptr});
    return true;
}

void RunningActions::end(QPushButton *button)
{
    const auto action = m_actions.take(button);
    button->setEnabled(action.wasEnabled);
    // Back, unless the user has gone on to something else.
    if (action.focus != nullptr && action.focus == button->window()->focusWidget()) {
        button->setFocus();
    }
}
