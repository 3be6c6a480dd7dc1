// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

// Says on standard error what is wrong, and with which item. False, to return at once.
bool complain(const QByteArray &words);
bool complain(const QByteArray &path, const char *reason);
bool complain(const QByteArray &path, int error);
