// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <Qt>
#include <QtGlobal>

#include <optional>

namespace platform {

// The virtual key code of one of Qt's keys (Qt::Key) on a US keyboard, for events without a scan
// code: those of tests and of on-screen keyboards. Nothing where that has no such key.
std::optional<quint16> virtualKeyCodeOfQtKey(int key, Qt::KeyboardModifiers modifiers);

} // namespace platform
