// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

#include <functional>

enum class Silent { No, Yes };

// What a gathering reports in addition to its alerts.
struct ZQGatheringRemarks {
    // Null where there is none.
    QString archive;
    // Why there is no archive, in the system's words; null where that is no failure.
    QString failure;
    // The folders that are there and could not be listed, each with the system's words.
    QStringList unreadableFolders;
};

// Gathers what support needs to know about programs of the maker, and shows their logs. Nothing is
// kept. Any thread; the main thread dispatches events meanwhile.
class ZQTroubleshootingUtils {
public:
    // Called on the calling thread when the gathering is over and before the alert.
    using Finished = std::function<void(const ZQGatheringRemarks &remarks)>;

    ZQTroubleshootingUtils() = delete;

    /// gatherLogsForAppsWithNames:
    /// gatherLogsForAppsWithNames:silent:
    /// gatherLogsForAppsWithNames:silent:additionalFiles:
    /// Puts the programs' logs, crash reports and preferences, of the user and of the computer,
    /// and the additional files (absolute paths) into a zip archive on the desktop that is named
    /// after the first program. True when there is one. This process's log is written out first.
    /// Unless silent, an alert tells the outcome and the call waits for its button. Where a file
    /// cannot be copied there is a console line and no alert, and what was copied before stays in
    /// "ZQ_App_Logs" in the temporary folder until the next gathering, as it does where nothing was
    /// found. The process's current directory changes. Both are kept on purpose for the maker's
    /// other programs.
    static bool gatherLogsForAppsWithNames(const QStringList &names, Silent silent = Silent::No,
                                           const QStringList &additionalFiles = {},
                                           const Finished &finished = {});
    /// gatherLogsForAppWithName:
    /// False for a null name.
    static bool gatherLogsForAppWithName(const QString &name);

    /// viewLogForApp:
    /// Opens the program's current log in the desktop's application for it; an alert where there is
    /// no such log. Whether that worked.
    static bool viewLogForApp(const QString &name);
    /// viewTaskLogForApp:
    /// The same with the log of its last task.
    static bool viewTaskLogForApp(const QString &name);
};
