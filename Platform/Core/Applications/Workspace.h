// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QString>

// NSWorkspace: the applications that the machine has. What was found is kept and looked up again
// when the folders or files have changed, so that both calls may be made for each row of a list at
// each painting. Main thread only.
namespace platform {

/// absolutePathForAppBundleWithIdentifier:
/// Path of the application, null where no such one is installed. An identifier is a desktop-file
/// id, with or without ".desktop", or else what an ".app" folder in the Applications folders calls
/// itself. Of several entries with one id the first counts, by the order of the data folders, also
/// where it says that the application is hidden, which means removed; one that is broken or whose
/// program is missing does not.
QString absolutePathForAppBundleWithIdentifier(const QString &identifier);

/// iconForFile:
/// Icon of the application at the path, null where it has none or is no application. It has a
/// picture for every size and scale that its source has; ask it for 16 points and it is sharp.
QIcon iconForFile(const QString &path);

} // namespace platform
