// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/XKeyboard.h"

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <cstdlib>

// A header for C that has a member of this name.
#define explicit explicit_
#include <xcb/xkb.h> // NOLINT(llvm-include-order)
#undef explicit

namespace platform {
namespace {

struct Free {
    void operator()(void *memory) const { std::free(memory); } // NOLINT(*-no-malloc)
};

constexpr quint8 eventNumber = 0x7F; // without the bit of events that a program sent

} // namespace

XKeyboard &XKeyboard::shared()
{
    static XKeyboard keyboard;
    return keyboard;
}

XKeyboard::XKeyboard() : m_connection(::xcb_connect(nullptr, nullptr)), m_works(begin()) {}

XKeyboard::~XKeyboard()
{
    ::xcb_disconnect(m_connection);
}

bool XKeyboard::begin()
{
    if (::xcb_connection_has_error(m_connection) != 0 ||
        ::xkb_x11_setup_xkb_extension(
            m_connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
            XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &m_event, nullptr) == 0) {
        return false;
    }
    constexpr quint16 events =
        XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr quint16 parts = 0xFF; // of the keymap
    ::xcb_xkb_select_events(m_connection, XCB_XKB_ID_USE_CORE_KBD, events, 0, events, parts, parts,
                            nullptr);
    return true;
}

std::optional<KeyboardLayout> XKeyboard::layout()
{
    if (!m_works) {
        return std::nullopt;
    }
    // Whatever changed the keymap before this answer was told in front of it.
    const std::unique_ptr<xcb_xkb_get_state_reply_t, Free> state(::xcb_xkb_get_state_reply(
        m_connection, ::xcb_xkb_get_state(m_connection, XCB_XKB_ID_USE_CORE_KBD), nullptr));
    if (state == nullptr) {
        return std::nullopt;
    }
    while (auto *event = ::xcb_poll_for_queued_event(m_connection)) {
        if ((event->response_type & eventNumber) == m_event) {
            m_keymap.reset();
        }
        std::free(event); // NOLINT(*-no-malloc)
    }
    if (m_keymap == nullptr) {
        const auto device = ::xkb_x11_get_core_keyboard_device_id(m_connection);
        m_keymap = device < 0 ? nullptr : makeKeymap([&](xkb_context *context) {
            return ::xkb_x11_keymap_new_from_device(context, m_connection, device,
                                                    XKB_KEYMAP_COMPILE_NO_FLAGS);
        });
    }
    if (m_keymap == nullptr) {
        return std::nullopt;
    }
    return KeyboardLayout(m_keymap, state->group, state->mods);
}

} // namespace platform
