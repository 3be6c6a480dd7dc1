// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

class QWidget;
class QWindow;

namespace platform {

// While it lives, and while its window has the keyboard, the desktop's global shortcuts come to the
// window as key presses instead of doing what they stand for. Under X11 by a keyboard grab, under
// Wayland by keyboard-shortcuts-inhibit-unstable-v1, where the compositor has that and allows it;
// elsewhere it does nothing. The keyboard follows the user to other windows as ever. May outlive
// its window, but not the application. Main thread only.
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
    class Means {
    public:
        Means() = default;
        virtual ~Means() = default;
        Means(const Means &) = delete;
        Means &operator=(const Means &) = delete;
        virtual bool isActive() = 0;
    };

private:
    std::unique_ptr<Means> m_means;
};

} // namespace platform
