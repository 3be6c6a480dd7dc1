// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/KeyCapture/ShortcutInhibition.h"

#include <QPointer>
#include <QTimer>
#include <QWindow>

namespace platform {

// X11: the window grabs the keyboard whenever it has the focus.
class KeyboardGrab : public QObject, public ShortcutInhibition::Method {
    Q_OBJECT
public:
    explicit KeyboardGrab(QWindow *window);
    ~KeyboardGrab() override;

    // The server ends the grab of a window that goes.
    bool isActive() override { return m_grabbed && m_window != nullptr; }

private:
    void follow();

    QPointer<QWindow> m_window;
    QTimer m_again;
    bool m_grabbed = false;
};

} // namespace platform
