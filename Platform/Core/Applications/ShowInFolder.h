// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace platform {

// Has the desktop's file manager open the item's folder and select the item there, by
// org.freedesktop.FileManager1 on the session bus; where nobody does that, opens the folder. Does
// not wait, and a failure is not reported. Main thread only.
void showInFolder(const QString &path);

} // namespace platform
