// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

struct libdeflate_compressor;

// How a packed piece ends: the stream is complete with it, or another piece follows.
enum class Ending { Complete, Open };

// Packs pieces of files. One for each thread.
class Deflater {
public:
    Deflater();
    ~Deflater();
    Deflater(const Deflater &) = delete;
    Deflater &operator=(const Deflater &) = delete;

    // Whether there was enough memory to make it.
    bool isUsable() const { return m_compressor != nullptr && m_reader != nullptr; }

    // How large a piece can become.
    std::size_t most(std::size_t size) const;

    // Packs into a buffer of that size at least; gives the size, 0 where that failed. A piece with
    // an open ending ends at a whole byte.
    std::size_t pack(const std::byte *plain, std::size_t size, Ending ending, std::byte *packed);

private:
    struct BlockReader;

    libdeflate_compressor *m_compressor;
    std::unique_ptr<BlockReader> m_reader;
};

// What ends a stream whose pieces are all open: an empty block.
constexpr std::byte emptyLastBlock[] = {std::byte{3}, std::byte{0}}; // NOLINT(*-avoid-c-arrays)
