// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace platform {

// Before a property list is written anew: where the file there holds something that is not a
// readable dictionary, keeps it under its name with ".damaged" added, in place of an older one. The
// file itself stays. False when that failed.
bool keepDamagedPropertyList(const QString &path);

} // namespace platform
