// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/ZQSoftwareUpdate.h"

#include "Platform/Console.h"

void ZQSoftwareUpdate::launchSoftwareUpdate()
{
    platform::consoleLine(QStringLiteral("Checking for updates is not available yet"));
}

void ZQSoftwareUpdate::automaticallyCheckForUpdates()
{
    platform::consoleLine(QStringLiteral("Checking for updates at start-up is not available yet"));
}
