// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

// Whole files at once, safely: nothing blocks on what only looks like a file, and a file is either
// the old or the new one.
namespace platform {

// The bytes of a regular file; nothing when there is none, it cannot be read or is larger than
// that. Never waits for a pipe or touches a device.
std::optional<QByteArray> contentsOfFile(const QString &path, qint64 maximumSize);

// Replaces a file atomically or makes it; its folder must be writable, not the file. An existing
// file keeps its mode and, for root, its owner; one that root makes gets that of its folder. Of a
// symbolic link the file that it leads to is replaced; the link of another user than root is
// refused, as is anything but a regular file. False, with the reason in error, when that failed;
// the old file is then untouched and nothing is left behind.
bool replaceFile(const QString &path, const QByteArray &contents, QString *error = nullptr);

} // namespace platform
