// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/FileError.h"

#include <unistd.h>

#include <cstddef>

namespace platform {

// Writes all of it to an open file. 0, else the reason (errno) why only so much was written.
inline int writeAll(int file, const char *data, std::size_t size, std::size_t &written)
{
    for (written = 0; written < size;) {
        const auto count =
            retried([&] { return ::write(file, data + written, size - written); }); // NOLINT
        if (count <= 0) {
            return count < 0 ? errno : ENOSPC;
        }
        written += static_cast<std::size_t>(count);
    }
    return 0;
}

} // namespace platform
