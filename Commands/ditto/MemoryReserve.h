// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <memory>

// Memory kept for libarchive, which in places does not check an allocation, or ends the process if
// it fails. It is released for each such call; one entry takes less.
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
