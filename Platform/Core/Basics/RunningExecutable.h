// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace platform {

// The path in a link "PID/exe" below the open folder "/proc". A program that was replaced or
// deleted while it runs has its old path. Empty where the process has ended, belongs to the kernel
// or may not be looked at.
QByteArray runningExecutable(int folder, const char *link);

// The path of this process's executable.
QByteArray ownExecutable();

} // namespace platform
