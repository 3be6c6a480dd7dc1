// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

// Whether the bytes of a name are UTF-8; others are in an encoding that nobody has named.
bool isUtf8(const QByteArray &name);
