// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

// Where an open zip file says that a name is in UTF-8: places of the byte with the flag, sorted, in
// the directory and in front of the entries. Nothing where the file is no zip archive.
std::optional<std::vector<std::uint64_t>> findUtf8Flags(int file);

constexpr unsigned char utf8FlagInByte = 1U << 3U;
