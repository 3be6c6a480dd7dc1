// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/ditto/Deflater.h"
#include "Commands/ditto/ZipItem.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

// A part of an item on its way into the archive.
struct Piece {
    ZipItem item;
    bool isFirst = true;
    bool isLast = true;
    // Stays as it is: a link, a folder, an empty file.
    bool isStored = false;
    std::uint64_t totalSize = 0; // up to and with this piece
    std::uint32_t crc = 0;       // likewise

    // Buffers that are used again and again.
    std::vector<std::byte> plain;
    std::size_t plainSize = 0;
    std::vector<std::byte> packed;
    std::size_t packedSize = 0;
};

// Packs pieces on as many threads as there are processors and hands them out in the order in which
// they came in. Holds a few pieces, however much passes through.
class PackingLine {
public:
    static constexpr std::size_t pieceSize = std::size_t{1} << 20U;

    PackingLine();
    ~PackingLine();
    PackingLine(const PackingLine &) = delete;
    PackingLine &operator=(const PackingLine &) = delete;

    // An idle piece to fill; null where all are on their way, and takeOldest() is to be called.
    Piece *takeIdle();
    void add(Piece *piece);
    // The piece that was added first, packed; waits for it. Null where there is none.
    Piece *takeOldest();
    void giveBack(Piece *piece) { m_idle.push_back(piece); }

private:
    struct Place {
        Piece *piece;
        bool isPacked = false;
    };

    void work();

    std::vector<std::unique_ptr<Piece>> m_pieces;
    std::vector<Piece *> m_idle; // of the caller's thread alone
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Place> m_line; // whose places stay where they are while others come and go
    std::deque<Place *> m_waiting;
    bool m_isEnding = false;
    std::vector<std::thread> m_threads;
};
