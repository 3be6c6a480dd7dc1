// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Keys/KeyboardLayout.h"

struct xcb_connection_t;

namespace platform {

// The keyboard of the X server in DISPLAY, over a connection of its own: changes of the keymap are
// told there, whatever the program's main connection asks for. Main thread only.
class XKeyboard {
public:
    // Connects at the first call.
    static XKeyboard &shared();

    XKeyboard();
    ~XKeyboard();
    XKeyboard(const XKeyboard &) = delete;
    XKeyboard &operator=(const XKeyboard &) = delete;

    // The keymap, the group that is switched on and the modifiers, as the server has them now.
    // Nothing without a server, or where it has no keyboard extension.
    std::optional<KeyboardLayout> layout();

private:
    bool begin();

    xcb_connection_t *m_connection;
    std::shared_ptr<xkb_keymap> m_keymap; // null: to be read
    quint8 m_event = 0;                   // the number of the extension's events
    bool m_works;
};

} // namespace platform
