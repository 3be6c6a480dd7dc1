// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Preference Pane/Authorization/AuthorizationUse.h"

#include <QWidget>

#include <optional>

// The use that a pane makes of it: from its creation on, but while its view is hidden. A settings
// application may keep the panes that it does not show. Main thread only.
class ShownPaneAuthorization : public QObject {
    Q_OBJECT
public:
    void follow(QWidget *view);
    void end();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool m_isEnded = false;
    std::optional<AuthorizationUse> m_use{std::in_place};
};
