// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

class QWidget;
class QWindow;

namespace platform {

// While it lives, and while its window has the keyboard, the desktop's global shortcuts reach the
// window as key presses instead of triggering their actions. Under X11 by a keyboard grab, under
// Wayland by keyboard-shortcuts-inhibit-unstable-v1, where the compositor has that and allows it;
// elsewhere it does nothing. Other windows get the keyboard as usual. May outlive its window, but
// not the application. Main thread only.
class ShortcutInhibition {
public:
    explicit ShortcutInhibition(QWindow *window);

    // For the window that the widget is in; the window's handle is made if it has none yet.
    explicit ShortcutInhibition(const QWidget *widget);
    ~ShortcutInhibition();
    ShortcutInhibition(const ShortcutInhibition &) = delete;
    ShortcutInhibition &operator=(const ShortcutInhibition &) = delete;

    // True while the desktop is known to let everything through to the window.
    bool isActive() const;

    // One for each kind of desktop.
    class Method {
    public:
        Method() = default;
        virtual ~Method() = default;
        Method(const Method &) = delete;
        Method &operator=(const Method &) = delete;
        virtual bool isActive() = 0;
    };

private:
    std::unique_ptr<Method> m_method;
};

} // namespace platform
