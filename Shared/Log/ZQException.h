// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/PlatformException.h"

// Reporting and telling apart exceptions that were caught. Any thread.
class ZQException {
public:
    ZQException() = delete;

    /// logException:forMethod:
    /// Logs and prints "Exception in <method>. <name> - <reason>." and returns it. It is the log's
    /// format, so that a "%" in it is interpreted, as callers in other programs expect.
    static QString logException(const platform::Exception &exception, const char *methodName);

    /// didTimeout:
    /// Whether the exception says that the other side did not answer in time.
    static bool didTimeout(const platform::Exception &exception);
};
