// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/KeyboardSettings.h"

#include <QProcess>

#include <xcb/xcb.h>

#include <cstdlib>

// A header for C that has a member of this name.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

namespace test {

bool setXLayout(const QString &layout, const QString &variant, const QString &option)
{
    // An empty option takes away those that are set.
    QStringList arguments{QStringLiteral("-layout"), layout,   QStringLiteral("-variant"), variant,
                          QStringLiteral("-option"), QString()};
    if (!option.isEmpty()) {
        arguments << QStringLiteral("-option") << option;
    }
    return QProcess::execute(QStringLiteral("setxkbmap"), arguments) == 0;
}

bool switchXGroup(quint8 group)
{
    auto *connection = ::xcb_connect(nullptr, nullptr);
    auto *extension = ::xcb_xkb_use_extension_reply(
        connection, ::xcb_xkb_use_extension(connection, 1, 0), nullptr);
    std::free(extension);
    const auto request = ::xcb_xkb_latch_lock_state_checked(connection, XCB_XKB_ID_USE_CORE_KBD, 0,
                                                            0, 1, group, 0, 0, 0);
    auto *error = ::xcb_request_check(connection, request);
    const bool done = extension != nullptr && error == nullptr;
    std::free(error);
    ::xcb_disconnect(connection);
    return done;
}

bool xdotool(const QStringList &arguments)
{
    return QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
}

QString xdotoolKey(quint32 evdevCode)
{
    return QLatin1Char('0') + QString::number(evdevCode + 8); // "9" would be the digit
}

KeyboardGrabOfAnother::KeyboardGrabOfAnother() : m_connection(::xcb_connect(nullptr, nullptr))
{
    const auto *screen = ::xcb_setup_roots_iterator(::xcb_get_setup(m_connection)).data;
    const auto request = ::xcb_grab_keyboard(m_connection, 0, screen->root, XCB_CURRENT_TIME,
                                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    auto *reply = ::xcb_grab_keyboard_reply(m_connection, request, nullptr);
    m_held = reply != nullptr && reply->status == XCB_GRAB_STATUS_SUCCESS;
    std::free(reply);
}

KeyboardGrabOfAnother::~KeyboardGrabOfAnother()
{
    ::xcb_disconnect(m_connection);
}

} // namespace test
