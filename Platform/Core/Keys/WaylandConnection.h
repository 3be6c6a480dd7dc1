// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QVector>

struct wl_display;
struct wl_event_queue;
struct wl_interface;
struct wl_registry;
struct wl_seat;

namespace platform {

// Requests of our own over the program's connection to its Wayland compositor, answered on a queue
// of their own. Null all over where the program has no such connection. Main thread only; to be
// destroyed before the application.
class WaylandConnection {
public:
    WaylandConnection();
    ~WaylandConnection();
    WaylandConnection(const WaylandConnection &) = delete;
    WaylandConnection &operator=(const WaylandConnection &) = delete;

    // The first seat; null where there is none.
    wl_seat *seat();
    bool seatHasKeyboard() const;

    // One of the compositor's global objects, of this version; null where it has none that new.
    // The caller destroys it before this object.
    void *bind(const wl_interface &interface, quint32 version);

    // Sends what was requested and handles the answers.
    void roundTrip();

private:
    struct Global {
        quint32 name;
        QByteArray interface;
        quint32 version;
    };
    static void onGlobal(void *data, wl_registry *registry, quint32 name, const char *interface,
                         quint32 version);
    static void onCapabilities(void *data, wl_seat *seat, quint32 capabilities);

    wl_display *m_display = nullptr;
    wl_event_queue *m_queue = nullptr;
    wl_registry *m_registry = nullptr;
    wl_seat *m_seat = nullptr;
    quint32 m_capabilities = 0;
    QVector<Global> m_globals;
};

} // namespace platform
