// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace platform {

// Name and version of the operating system for people, e.g. "Debian GNU/Linux 12 (bookworm)".
QString operatingSystemVersionString();

// Processors that are online.
long processorCount();

// Size of the machine's memory in bytes.
quint64 physicalMemory();

} // namespace platform
