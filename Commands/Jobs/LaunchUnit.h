// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/Jobs/LaunchJob.h"

// Jobs as units of the systemd user manager.
namespace platform {

// "app-Label.service", where what a unit's name cannot hold is escaped as systemd-escape does it;
// so desktop portals know the program by its label.
QByteArray launchUnitName(const QByteArray &label);

// The label of the unit of that name; empty where it is not the name of a job's unit.
QByteArray launchUnitLabel(const QByteArray &unitName);

// The unit file of a job.
QByteArray launchUnitFile(const LaunchJob &job);

// The unit that is started at log-in, and starts the jobs of log-in in the graphical session.
constexpr auto logInUnitName = "ostrel-log-in.service";

// Its unit file, with the path of launchctl.
QByteArray logInUnitFile(const QByteArray &launchctl);

// Why systemd cannot run this valid job; null where it can.
QString launchUnitObjection(const LaunchJob &job);

} // namespace platform
