// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/SystemInfo.h"

#include <QSysInfo>

#include <unistd.h>

#include <algorithm>

namespace platform {

QString operatingSystemVersionString()
{
    return QSysInfo::prettyProductName();
}

long processorCount()
{
    return std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN));
}

quint64 physicalMemory()
{
    const auto pages = std::max(0L, ::sysconf(_SC_PHYS_PAGES));
    const auto pageSize = std::max(0L, ::sysconf(_SC_PAGESIZE));
    return static_cast<quint64>(pages) * static_cast<quint64>(pageSize);
}

} // namespace platform
