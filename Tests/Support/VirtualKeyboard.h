// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <memory>

namespace test {

// A keyboard of the Wayland compositor that the test runs in: its keys come to the program's
// windows as those of a real keyboard do.
class VirtualKeyboard {
public:
    // With layouts of XKB, e.g. "us,ru".
    explicit VirtualKeyboard(const QByteArray &layouts);
    ~VirtualKeyboard();
    VirtualKeyboard(const VirtualKeyboard &) = delete;
    VirtualKeyboard &operator=(const VirtualKeyboard &) = delete;

    bool works() const;

    // Keys by their evdev codes.
    void press(quint32 key);
    void release(quint32 key);
    void click(quint32 key);

    // Switches to one of the layouts, from 0.
    void switchGroup(quint32 group);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace test
