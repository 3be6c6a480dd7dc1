// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

// Gathers what support needs.
//
// Not available yet: gathering ends with a console line.
class ZQTroubleshootingUtils {
public:
    // Whether gathering logs can do anything.
    static bool isAvailable() { return false; }

    /// gatherLogsForAppsWithNames: collects logs, crash reports and preferences of these programs.
    static void gatherLogsForAppsWithNames(const QStringList &names);
};
