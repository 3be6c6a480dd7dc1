// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/Alerts/AlertPanel.h"

namespace platform {

// NSRunAlertPanel: shows an alert that blocks all windows of the application, in front of its main
// window where it has one, and waits for the answer. The answer of Esc where nobody can give one
// any more: the application quits, or the window goes. Without windows at all (no QApplication) the
// alert's texts go to the system console. Any thread.
qint64 runModalAlert(const AlertDescription &description);

} // namespace platform
