// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Authorization/ShownPaneAuthorization.h"

#include <QEvent>

void ShownPaneAuthorization::follow(QWidget *view)
{
    view->installEventFilter(this);
}

void ShownPaneAuthorization::end()
{
    m_isEnded = true;
    m_use.emplace(); // also of what was asked for while the view was hidden
    m_use.reset();
}

bool ShownPaneAuthorization::eventFilter(QObject *watched, QEvent *event)
{
    // The pane of a minimised window has not been left: that is hidden by the system.
    if (event->type() == QEvent::Hide && !event->spontaneous()) {
        m_use.reset();
    } else if (event->type() == QEvent::Show && !m_use && !m_isEnded) {
        m_use.emplace();
    }
    return QObject::eventFilter(watched, event);
}
