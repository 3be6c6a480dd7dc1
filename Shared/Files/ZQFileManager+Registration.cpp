// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/ApplicationRegistration.h"
#include "Shared/Files/ZQFileManagerDesktop.h"

bool ZQFileManagerDesktop::registerApplicationWithLaunchServices(const QString &path)
{
    return !platform::registerApplication(path);
}
