// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/Jobs/LaunchSession.h"
#include "Commands/job-generator/JobUnits.h"

#include <unistd.h>

#include <cstdio>

namespace {

// Accounts of services and of login screens have numbers up to this one (systemd's SYSTEM_UID_MAX).
// Nobody has logged in there whom a job could serve.
constexpr uid_t lastSystemAccount = 999;

} // namespace

// Run by the systemd user manager when it starts and when it is reloaded. Always ends with success:
// nothing that a job file holds may keep anybody from logging in.
int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fputs(
            "usage: job-generator FOLDER\n"
            "Makes units in FOLDER from the system-wide job files and from the user's own.\n",
            stderr);
        return 2;
    }
    const auto user = ::getuid();
    if (user != 0 && user <= lastSystemAccount) {
        return 0;
    }
    JobUnits units(argv[1]); // NOLINT(*-pointer-arithmetic)
    const auto files = platform::launchJobFiles();
    for (const auto &file : files) {
        units.addFile(file);
    }
    units.addLogIn();
    return 0;
}
