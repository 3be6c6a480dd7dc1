// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Notifications/Notification.h"

#include <QString>

// Names shared with the listener: files, processes, notifications and status words.
namespace names {

inline const QString listener = QStringLiteral("OstrelListener");
inline const QString listenerLabel = QStringLiteral("com.corvane.OstrelListener");
inline const QString listenerFile = QStringLiteral("com.corvane.OstrelListener.plist");

inline const QString statusUpdate = QStringLiteral("ZQOstrelClientStatusUpdate");
inline const QString currentStatus = QStringLiteral("ZQOstrelClientCurrentStatus");
inline const QString disconnectClient = QStringLiteral("ZQOstrelClientDisconnect");
inline const QString relaunchClient = QStringLiteral("ZQOstrelClientRelaunch");

inline const QString keyboardLayoutModified = QStringLiteral("ZQOstrelKeyboardLayoutModified");

// Inside the process: a shortcut was captured, or is to be taken away.
inline const QString shortcutKeyChanged = QStringLiteral("ZQShortcutKeyChanged");
inline const QString shortcutKeyCleared = QStringLiteral("ZQShortcutKeyCleared");
inline const QString keyCode = QStringLiteral("keycode");
inline const QString modifierFlags = QStringLiteral("modifierFlags");

inline const QString status = QStringLiteral("status");

inline const QString running = QStringLiteral("Running");
inline const QString disconnected = QStringLiteral("Disconnected");
inline const QString relaunching = QStringLiteral("Relaunching...");
inline const QString notLoaded = QStringLiteral("Not loaded");
inline const QString creatingJob = QStringLiteral("Creating job...");
inline const QString launchingService = QStringLiteral("Launching service...");
inline const QString disconnecting = QStringLiteral("Disconnecting...");
inline const QString unloadingJob = QStringLiteral("Unloading job...");
inline const QString timedOut = QStringLiteral("Timed out");

// A status object of our own, handed to updateStatus() and never posted.
inline platform::Notification statusNotification(const QString &word)
{
    return {QString(), {}, {{status, word}}};
}

} // namespace names
