// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Applications/ApplicationBundle.h"

#include <vector>

namespace platform {

// The applications that this desktop session lists: the ".app" folders in the first folder (null
// for none), then all others, each group sorted by name as people sort. Of entries with one id
// only the first counts, by the order of the data folders. Reads every entry, so it is for a worker
// thread; ends early, with what it has, where that one is to end (WorkerThreads).
std::vector<ApplicationBundle> installedApplications(const QString &firstFolder);

} // namespace platform
