// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/ZQTroubleshootingUtils.h"

#include "Platform/Console.h"

void ZQTroubleshootingUtils::gatherLogsForAppsWithNames(const QStringList &names)
{
    platform::consoleLog(QStringLiteral("Gathering the logs of %@ is not available yet"),
                         names.join(QStringLiteral(", ")));
}
