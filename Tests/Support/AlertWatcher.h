// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/Alerts/AlertPanel.h"

#include <QPointer>
#include <QTimer>

#include <functional>

namespace test {

// Waits for alerts as a user does, and acts on each one once, some passes after it came up.
class AlertWatcher {
public:
    using Act = std::function<void(platform::AlertPanel &)>;

    explicit AlertWatcher(Act act);

    // How many alerts were acted on.
    int count() const { return m_count; }

private:
    void look();

    Act m_act;
    QTimer m_timer;
    QList<QPointer<platform::AlertPanel>> m_seen;
    int m_count = 0;
};

// The alerts that are on the screen, in no order; one of them, or null where there is none.
QList<platform::AlertPanel *> visibleAlerts();
platform::AlertPanel *visibleAlert();

// Clicks the middle of the button with that object name: "defaultButton", "alternateButton",
// "otherButton" or "suppressionButton". Ends the test process when there is none.
void click(platform::AlertPanel &alert, const char *button);

} // namespace test
