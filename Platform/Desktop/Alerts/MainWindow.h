// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

class QWidget;

namespace platform {

// Whether the program can show windows: it has a QApplication. Any thread.
bool hasWindows();

// The application's main window: the visible main window that is active, else any; where there is
// no visible QMainWindow, the same of other windows, then of dialogs that belong to no window. Null
// where there is none. Any thread.
QWidget *mainWindow();

} // namespace platform
