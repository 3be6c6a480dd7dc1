// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/Tables/TableView.h"

// The table of the remote control's keys: the delete keys ask to take the selected key's shortcut
// away.
class ZQShortcutKeyTableview : public platform::TableView {
    Q_OBJECT
public:
    using TableView::TableView;

    /// keyDown:
    /// Posts ZQShortcutKeyCleared when the first of the key's characters, modifiers ignored, is
    /// that of Backspace or Delete. False for any other key, also for one without a character.
    static bool keyDown(const QString &characters);

protected:
    void keyPressEvent(QKeyEvent *event) override;
};
