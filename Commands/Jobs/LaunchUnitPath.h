// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace platform {

// The file that the systemd user manager knows this unit by when no generator makes it; empty where
// there is none.
QByteArray unitOfAnotherOrigin(const QByteArray &unitName);

} // namespace platform
