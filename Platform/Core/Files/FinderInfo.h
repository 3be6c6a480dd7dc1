// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <cstdint>
#include <optional>

// The Finder information of an item, itself: 32 bytes, which live in the extended attribute
// "user.com.apple.FinderInfo", the name under which rsync and others bring them to Linux. The flags
// word is the 9th and 10th byte, high byte first, of files as well as of folders.
namespace platform {

// The flags word; 0 for an item that has no Finder information; nothing where there is no such
// item, or it cannot be read.
std::optional<std::uint16_t> finderFlags(const QString &path);

// Replaces those bits of the flags word and keeps the rest. False where that failed.
bool setFinderFlags(std::uint16_t flags, const QString &path, std::uint16_t which = 0xFFFF);

} // namespace platform
