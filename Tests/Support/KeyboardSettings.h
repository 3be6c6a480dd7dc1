// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

struct xcb_connection_t;

// The keyboard of the X server that the test runs in.
namespace test {

// Sets the server's layout as setxkbmap does; false where that fails.
bool setXLayout(const QString &layout, const QString &variant = {}, const QString &option = {});

// Switches to one of the server's layouts, from 0, as a layout switcher of the desktop does.
bool switchXGroup(quint8 group);

// Runs xdotool: presses and releases come to the program as those of a real keyboard do.
bool xdotool(const QStringList &arguments);

// A key by its evdev code, in the form that xdotool takes for a key and never for a character.
QString xdotoolKey(quint32 evdevCode);

// Another client of the X server that keeps the keyboard for itself while it lives.
class KeyboardGrabOfAnother {
public:
    KeyboardGrabOfAnother();
    ~KeyboardGrabOfAnother();
    KeyboardGrabOfAnother(const KeyboardGrabOfAnother &) = delete;
    KeyboardGrabOfAnother &operator=(const KeyboardGrabOfAnother &) = delete;

    bool isHeld() const { return m_held; }

private:
    xcb_connection_t *m_connection;
    bool m_held = false;
};

} // namespace test
