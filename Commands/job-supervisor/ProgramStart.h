// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/Jobs/LaunchJob.h"

#include <sys/types.h>

struct StartedProgram {
    pid_t pid = 0; // 0 where no process could be made
    QString error; // why the program does not run in it; null where it does
};

// Starts the job's program in a process that leads a session and a group of its own, without a
// descriptor of ours, and that gets SIGTERM when we die. A process that could not run the program
// ends with the status that systemd would give it, and is waited for like any other.
StartedProgram startProgram(const platform::LaunchJob &job);
