// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayList>

#include <systemd/sd-login.h>

#include <memory>
#include <optional>

// The user's graphical session, as logind tells of it.
class GraphicalSession {
public:
    // Of this process's user. Nothing while there is none: nobody is logged in, or only in a text
    // session such as ssh.
    static std::optional<GraphicalSession> current();

    // Whether variables ("NAME=value") name the session's display: WAYLAND_DISPLAY under Wayland,
    // DISPLAY under X.
    bool hasDisplayIn(const QByteArrayList &environment) const;

    // The display's variables as one of the session's programs has them; empty where none has. For
    // desktops that export them to nobody.
    QByteArrayList displayOfPrograms() const;

private:
    GraphicalSession(QByteArray id, bool isWayland) : m_id(std::move(id)), m_isWayland(isWayland) {}

    QByteArray m_id;
    bool m_isWayland;
};

// Tells of changes of logind's sessions.
class SessionMonitor {
public:
    SessionMonitor();

    // False where no logind runs.
    bool isOpen() const { return m_monitor != nullptr; }

    // Returns after a change or, where milliseconds is not negative, after that time.
    void wait(int milliseconds) const;

private:
    struct Close {
        void operator()(sd_login_monitor *monitor) const { ::sd_login_monitor_unref(monitor); }
    };
    std::unique_ptr<sd_login_monitor, Close> m_monitor;
};
