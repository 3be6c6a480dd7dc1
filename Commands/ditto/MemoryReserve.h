// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <memory>

// Memory for libarchive, which in places does not look whether it has got any, or ends the process.
// Released for each such call; what one entry takes is less.
class MemoryReserve {
public:
    MemoryReserve() { restore(); }

    void release()
    {
        for (auto &part : m_parts) {
            part.reset();
        }
    }

    // Throws where there is no more.
    void restore()
    {
        for (auto &part : m_parts) {
            part.reset(new std::byte[partSize]); // NOLINT(*-owning-memory)
        }
    }

private:
    // As large as what it takes at once, so that both come from the same place.
    static constexpr std::size_t partSize = 70000;
    std::array<std::unique_ptr<std::byte[]>, 4> m_parts; // NOLINT(*-avoid-c-arrays)
};
