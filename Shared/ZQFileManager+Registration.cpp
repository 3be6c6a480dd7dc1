// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/ApplicationRegistration.h"
#include "Shared/ZQFileManagerDesktop.h"

bool ZQFileManagerDesktop::registerApplicationWithLaunchServices(const QString &path)
{
    return !platform::registerApplication(path);
}
