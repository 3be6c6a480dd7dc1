// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

namespace platform {

// Whether the desktop's own file dialog can be shown now; otherwise Qt's is to be taken
// (QFileDialog::DontUseNativeDialog). The desktop portal asks the kernel who its caller is, is
// refused that for an untraceable process, and then shows nothing and says that the user has
// cancelled. Main thread only.
bool canShowDesktopFileDialog();

} // namespace platform
