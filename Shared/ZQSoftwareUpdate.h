// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

// Launches the maker's updater application.
//
// Not available yet: a check ends with a console line.
class ZQSoftwareUpdate {
public:
    // Whether checking for updates can do anything.
    static bool isAvailable() { return false; }

    /// launchSoftwareUpdate checks at the user's request.
    static void launchSoftwareUpdate();

    /// automaticallyCheckForUpdates checks at start-up. Any thread.
    static void automaticallyCheckForUpdates();
};
