// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/ZQAuthorization.h"

#include "Platform/Console.h"

ZQAuthorization &ZQAuthorization::sharedController()
{
    static ZQAuthorization controller;
    return controller;
}

bool ZQAuthorization::authStart()
{
    platform::consoleLine(QStringLiteral("Administrator's authorisation is not available yet"));
    return false;
}

bool ZQAuthorization::authMoveFile(const QString & /*source*/, const QString & /*destination*/)
{
    return authStart();
}
