// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/PaneLoading/PreferencePane.h"

#include <memory>

namespace platform {

// A loaded pane, or why it could not be loaded, in words for the user.
struct LoadedPreferencePane {
    std::unique_ptr<PreferencePane> pane;
    QString error;
};

// Loads the pane of a ".prefPane" bundle. The plug-in stays loaded until the process ends.
LoadedPreferencePane loadPreferencePane(const QString &bundlePath);

// Where a pane lies: beside a build's programs (in a folder above one of them), else installed, in
// installedFolder. Null where it is in neither place.
QString findPreferencePane(const QString &bundleName, const QString &program,
                           const QString &installedFolder);

} // namespace platform
