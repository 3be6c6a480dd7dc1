// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QPointer>
#include <QPushButton>

// The buttons whose actions are under way: disabled, so that none is begun twice.
class RunningActions {
public:
    // False where the button's action is under way already.
    bool begin(QPushButton *button);
    void end(QPushButton *button);

    bool areNone() const { return m_actions.isEmpty(); }

private:
    struct Action {
        bool wasEnabled;
        // What has got the focus of the button, which a disabled one cannot keep.
        QPointer<QWidget> focus;
    };
    QHash<QPushButton *, Action> m_actions;
};
