// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/KeyCapture/KeyboardGrab.h"

#include <QGuiApplication>
#include <qpa/qplatformnativeinterface.h>

#include <xcb/xcb.h>

namespace platform {
namespace {

// The server refuses while another program has the keyboard, such as the window manager for the
// shortcut that opened the window, and while the window is not yet shown.
constexpr int retryInterval = 50; // milliseconds

// At once: Qt keeps requests back until its event loop rests, and what is typed until then would
// come here.
void releaseKeyboard(QWindow &window)
{
    window.setKeyboardGrabEnabled(false);
    auto *native = QGuiApplication::platformNativeInterface();
    if (auto *connection = native->nativeResourceForIntegration("connection")) {
        ::xcb_flush(static_cast<xcb_connection_t *>(connection));
    }
}

} // namespace

KeyboardGrab::KeyboardGrab(QWindow *window) : m_window(window)
{
    m_again.setInterval(retryInterval);
    connect(&m_again, &QTimer::timeout, this, &KeyboardGrab::follow);
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &KeyboardGrab::follow);
    follow();
}

KeyboardGrab::~KeyboardGrab()
{
    if (m_grabbed && m_window != nullptr) {
        releaseKeyboard(*m_window);
    }
}

void KeyboardGrab::follow()
{
    // Without the focus it would take what the user types elsewhere.
    const bool wanted = m_window != nullptr && QGuiApplication::focusWindow() == m_window;
    if (wanted && !m_grabbed) {
        m_grabbed = m_window->setKeyboardGrabEnabled(true);
    } else if (!wanted && m_grabbed) {
        m_grabbed = false;
        if (m_window != nullptr) {
            releaseKeyboard(*m_window);
        }
    }
    if (wanted && !m_grabbed) {
        m_again.start();
    } else {
        m_again.stop();
    }
}

} // namespace platform
