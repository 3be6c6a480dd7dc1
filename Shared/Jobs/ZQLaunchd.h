// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Shared/Authorization/ShouldAuth.h"
#include "Shared/Basics/ZQLocalPaths.h"

#include <QString>
#include <QVariantMap>

// Whether a job runs in each user's session ("LaunchAgents") or for the computer ("LaunchDaemons").
enum class JobKind { Daemon, Agent };

// Job files of the service manager: "LaunchAgents/LABEL.plist" or "LaunchDaemons/LABEL.plist" in a
// Library folder, driven with "/bin/launchctl". Nothing is kept. Any thread but the main one should
// call these: each command may take up to 10 seconds.
class ZQLaunchd {
public:
    ZQLaunchd() = delete;

    /// startLaunchAgent:settings:user:
    /// Without authorisation.
    static bool startLaunchAgent(const QString &label, const QVariantMap &settings, Domain domain);

    /// startJob:settings:user:launchAgent:shouldAuth:killProcessName:
    /// Writes the settings as the job's file, ends the processes of that name, and has the service
    /// manager load the job, an old one of that label first removed. False only when the file could
    /// not be written, which the user has then seen in an alert; what the commands say is ignored.
    /// Objection, where it is given, gets why the job was not loaded, in launchctl's words or ours;
    /// null where nobody has told so.
    static bool startJob(const QString &label, const QVariantMap &settings, Domain domain,
                         JobKind kind, ShouldAuth shouldAuth, const QString &killProcessName = {},
                         QString *objection = nullptr);

    /// stopJob:user:launchAgent:shouldAuth:
    /// Unloads the job and leaves its file. Always with the caller's rights, whatever shouldAuth
    /// says (kept on purpose for the maker's other programs). Does nothing without a label.
    static void stopJob(const QString &label, Domain domain, JobKind kind, ShouldAuth shouldAuth);

    /// removeJob:user:launchAgent:shouldAuth:
    /// Unloads the job and deletes its file.
    static void removeJob(const QString &label, Domain domain, JobKind kind, ShouldAuth shouldAuth);

    /// removeLaunchAgent:user:
    /// Always the agent of the user's Library, whatever the domain (kept on purpose for the maker's
    /// other programs).
    static void removeLaunchAgent(const QString &label, Domain domain);
};
