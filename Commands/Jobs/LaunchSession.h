// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayList>

// Where the jobs of the user's session are kept.
namespace platform {

// The folder of the jobs of this user alone: "Library/LaunchAgents" in the user's home. Empty where
// there is no home.
QByteArray ownLaunchAgentFolder();

// The folders whose job files are jobs of this user, the computer's first: "/Library/LaunchAgents"
// and the user's own.
QByteArrayList launchAgentFolders();

// All job files in those folders, in their order.
QByteArrayList launchJobFiles();

// Those of the variables ("NAME=value") that say where the session's display is: DISPLAY,
// WAYLAND_DISPLAY and XAUTHORITY.
QByteArrayList displayVariablesIn(const QByteArrayList &environment);

// The session's runtime folder: $XDG_RUNTIME_DIR, else the usual one of this user. Empty where
// there is none that is this user's alone.
QByteArray sessionRuntimeFolder();

// The folder for the job control of the session, which nobody else can enter, made where it is
// missing: "ostrel" in the runtime folder, else one of the user's own in "/tmp". Empty when it
// cannot be had.
QByteArray jobControlFolder();

// The supervisor's socket in that folder.
constexpr auto supervisorSocketName = "supervisor.socket";

} // namespace platform
