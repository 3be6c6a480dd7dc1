// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

namespace platform {

// Whether the desktop's own file dialog can be shown now; otherwise Qt's must be used
// (QFileDialog::DontUseNativeDialog). The desktop portal asks the kernel about its caller. For an
// untraceable process the kernel refuses, and the portal then shows nothing and reports that the
// user has cancelled. Main thread only.
bool canShowDesktopFileDialog();

} // namespace platform
