// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/KeyCapture/WaylandShortcutInhibitor.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPlatformSurfaceEvent>
#include <qpa/qplatformnativeinterface.h>

#include <keyboard-shortcuts-inhibit-unstable-v1-client-protocol.h>

namespace platform {
namespace {

void onActive(void *data, zwp_keyboard_shortcuts_inhibitor_v1 *)
{
    *static_cast<bool *>(data) = true;
}

void onInactive(void *data, zwp_keyboard_shortcuts_inhibitor_v1 *)
{
    *static_cast<bool *>(data) = false;
}

constexpr zwp_keyboard_shortcuts_inhibitor_v1_listener listener{onActive, onInactive};

wl_surface *surfaceOf(QWindow *window)
{
    return window->handle() == nullptr
               ? nullptr
               : static_cast<wl_surface *>(
                     QGuiApplication::platformNativeInterface()->nativeResourceForWindow("surface",
                                                                                         window));
}

} // namespace

WaylandShortcutInhibitor::WaylandShortcutInhibitor(QWindow *window)
    : m_window(window),
      m_manager(static_cast<zwp_keyboard_shortcuts_inhibit_manager_v1 *>(
          m_connection.bind(zwp_keyboard_shortcuts_inhibit_manager_v1_interface, 1)))
{
    if (m_manager != nullptr) {
        window->installEventFilter(this);
        begin();
    }
}

WaylandShortcutInhibitor::~WaylandShortcutInhibitor()
{
    end();
    if (m_manager != nullptr) {
        ::zwp_keyboard_shortcuts_inhibit_manager_v1_destroy(m_manager);
    }
}

bool WaylandShortcutInhibitor::isActive()
{
    m_connection.roundTrip();
    return m_active;
}

bool WaylandShortcutInhibitor::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Expose) {
        begin(); // the surface is made when the window is shown
    } else if (event->type() == QEvent::Hide ||
               (event->type() == QEvent::PlatformSurface &&
                static_cast<QPlatformSurfaceEvent *>(event)->surfaceEventType() ==
                    QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed)) {
        end();
    }
    return QObject::eventFilter(watched, event);
}

void WaylandShortcutInhibitor::begin()
{
    auto *surface = m_window == nullptr ? nullptr : surfaceOf(m_window);
    auto *seat = m_inhibitor == nullptr && surface != nullptr ? m_connection.seat() : nullptr;
    if (seat == nullptr) {
        return;
    }
    m_inhibitor =
        ::zwp_keyboard_shortcuts_inhibit_manager_v1_inhibit_shortcuts(m_manager, surface, seat);
    ::zwp_keyboard_shortcuts_inhibitor_v1_add_listener(m_inhibitor, &listener, &m_active);
    m_connection.roundTrip();
}

void WaylandShortcutInhibitor::end()
{
    m_active = false;
    if (m_inhibitor != nullptr) {
        ::zwp_keyboard_shortcuts_inhibitor_v1_destroy(m_inhibitor);
        m_inhibitor = nullptr;
        m_connection.roundTrip();
    }
}

} // namespace platform
