// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/ditto/ZipDirectory.h"

#include <cstdint>
#include <string>

// The numbers of zip files, the lowest byte first.
inline std::uint64_t zipNumber(const std::string &bytes, std::size_t at, unsigned size)
{
    std::uint64_t value = 0;
    for (auto i = size; i-- > 0;) {
        value = value << 8U | static_cast<unsigned char>(bytes.at(at + i));
    }
    return value;
}

inline void addZipNumber(std::string &bytes, std::uint64_t value, unsigned size)
{
    for (unsigned i = 0; i < size; ++i) {
        bytes += static_cast<char>(value >> (8U * i));
    }
}

// Sizes and offsets that 32 bits cannot hold are this, and in a field of their own.
constexpr std::uint64_t longNumber = 0xFFFFFFFF;
constexpr unsigned longNumbersField = 0x0001;

// The entry that a directory's record begins, of which its name and fields are given, too. The
// offset is that of the header in front of its bytes.
ZipEntry entryOf(const std::string &record, const std::string &name, const std::string &fields);
