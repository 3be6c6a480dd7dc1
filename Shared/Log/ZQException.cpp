// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Log/ZQException.h"

#include "Shared/Log/ZQLog.h"

QString ZQException::logException(const platform::Exception &exception, const char *methodName)
{
    auto text = platform::format(QStringLiteral("Exception in %s. %@ - %@."), methodName,
                                 exception.name(), exception.reason());
    ZQLog::appendLogAndPrint(text);
    return text;
}

bool ZQException::didTimeout(const platform::Exception &exception)
{
    return exception.name() == QStringLiteral("NSPortTimeoutException");
}
