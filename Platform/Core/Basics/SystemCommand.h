// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// The commands of the system that are run by path.
namespace platform {

// What to run for the command at this path: the file itself where there is one; else our own
// executable of that name in the private folder; else the system's command of that name in its
// usual folders. The unchanged path if none of them exists. For root, only a file counts that
// nobody but root can change. Our own "/usr/sbin/chown" goes before the system's where no group
// "wheel" exists, since only ours knows "root:wheel" then. No environment variable is looked at.
QString systemCommand(const QString &path);

// The private folder of our own commands: the one that the build calls PLATFORM_COMMANDS, in a
// folder above this program or plug-in, be that the build folder or an installation's prefix. That
// of the installation where there is none.
QString privateCommandFolder();

} // namespace platform
