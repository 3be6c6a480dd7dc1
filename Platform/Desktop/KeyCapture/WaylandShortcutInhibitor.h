// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Keys/WaylandConnection.h"
#include "Platform/Desktop/KeyCapture/ShortcutInhibition.h"

#include <QPointer>
#include <QWindow>

struct zwp_keyboard_shortcuts_inhibit_manager_v1;
struct zwp_keyboard_shortcuts_inhibitor_v1;

namespace platform {

// Wayland: asks the compositor for an inhibitor for the window's surface, as long as it has one.
class WaylandShortcutInhibitor : public QObject, public ShortcutInhibition::Method {
    Q_OBJECT
public:
    explicit WaylandShortcutInhibitor(QWindow *window);
    ~WaylandShortcutInhibitor() override;

    bool isActive() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void begin();
    void end();

    WaylandConnection m_connection;
    QPointer<QWindow> m_window;
    zwp_keyboard_shortcuts_inhibit_manager_v1 *m_manager = nullptr;
    zwp_keyboard_shortcuts_inhibitor_v1 *m_inhibitor = nullptr;
    bool m_active = false;
};

} // namespace platform
