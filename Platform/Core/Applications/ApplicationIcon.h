// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>

namespace platform {

class ApplicationBundle;

// The application's icon, looked up at each call: that of the icon theme by its name, the file at
// an absolute path, or one in the folder's own resources ("CFBundleIconFile", whose ending may be
// missing). A null icon where there is none, and for pictures that are no regular files, broken or
// huge. Main thread only.
QIcon applicationIcon(const ApplicationBundle &application);

} // namespace platform
