// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/WaylandConnection.h"

#include <QGuiApplication>
#include <qpa/qplatformnativeinterface.h>

#include <wayland-client.h>

namespace platform {
namespace {

constexpr quint32 seatVersion = 5; // the first whose objects can all be released

wl_display *programsDisplay()
{
    auto *native = QGuiApplication::platformName().startsWith(QLatin1String("wayland"))
                       ? QGuiApplication::platformNativeInterface()
                       : nullptr;
    return native == nullptr
               ? nullptr
               : static_cast<wl_display *>(native->nativeResourceForIntegration("wl_display"));
}

void onGlobalRemove(void *, wl_registry *, quint32) {}

void onSeatName(void *, wl_seat *, const char *) {}

} // namespace

WaylandConnection::WaylandConnection() : m_display(programsDisplay())
{
    static constexpr wl_registry_listener listener{onGlobal, onGlobalRemove};
    if (m_display == nullptr) {
        return;
    }
    m_queue = ::wl_display_create_queue(m_display);
    auto *wrapper = static_cast<wl_display *>(::wl_proxy_create_wrapper(m_display));
    ::wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(wrapper), m_queue);
    m_registry = ::wl_display_get_registry(wrapper);
    ::wl_proxy_wrapper_destroy(wrapper);
    ::wl_registry_add_listener(m_registry, &listener, this);
    roundTrip();
}

WaylandConnection::~WaylandConnection()
{
    if (m_seat != nullptr) {
        ::wl_seat_release(m_seat);
    }
    if (m_display != nullptr) {
        ::wl_registry_destroy(m_registry);
        ::wl_display_flush(m_display);
        ::wl_event_queue_destroy(m_queue);
    }
}

wl_seat *WaylandConnection::seat()
{
    static constexpr wl_seat_listener listener{onCapabilities, onSeatName};
    if (m_seat == nullptr) {
        m_seat = static_cast<wl_seat *>(bind(wl_seat_interface, seatVersion));
        if (m_seat != nullptr) {
            ::wl_seat_add_listener(m_seat, &listener, this);
            roundTrip();
        }
    }
    return m_seat;
}

bool WaylandConnection::seatHasKeyboard() const
{
    return (m_capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0;
}

void *WaylandConnection::bind(const wl_interface &interface, quint32 version)
{
    for (const auto &global : std::as_const(m_globals)) {
        if (global.interface == interface.name && global.version >= version) {
            return ::wl_registry_bind(m_registry, global.name, &interface, version);
        }
    }
    return nullptr;
}

void WaylandConnection::roundTrip()
{
    if (m_display != nullptr) {
        ::wl_display_roundtrip_queue(m_display, m_queue);
    }
}

void WaylandConnection::onGlobal(void *data, wl_registry *, quint32 name, const char *interface,
                                 quint32 version)
{
    static_cast<WaylandConnection *>(data)->m_globals.append(Global{name, interface, version});
}

void WaylandConnection::onCapabilities(void *data, wl_seat *, quint32 capabilities)
{
    static_cast<WaylandConnection *>(data)->m_capabilities = capabilities;
}

} // namespace platform
