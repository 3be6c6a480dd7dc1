// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/PackingLine.h"

#include "Platform/SignalsBlocked.h"

#include <algorithm>
#include <system_error>

namespace {

// More would find nothing to do: reading and writing is one thread's work.
constexpr unsigned mostThreads = 8;

void packPiece(Deflater &deflater, Piece &piece)
{
    if (!deflater.isUsable()) {
        return; // nothing packed says that
    }
    if (piece.packed.size() < deflater.most(piece.plain.size())) {
        piece.packed.resize(deflater.most(piece.plain.size()));
    }
    const auto isWhole = piece.isFirst && piece.isLast;
    piece.packedSize =
        deflater.pack(piece.plain.data(), piece.plainSize,
                      isWhole ? Ending::Complete : Ending::Open, piece.packed.data());
    piece.isStored = isWhole && piece.packedSize >= piece.plainSize;
}

} // namespace

PackingLine::PackingLine()
{
    const auto threads = std::clamp(std::thread::hardware_concurrency(), 1U, mostThreads);
    for (unsigned i = 0; i < 2 * threads + 2; ++i) {
        m_pieces.push_back(std::make_unique<Piece>());
        m_idle.push_back(m_pieces.back().get());
    }
    const platform::SignalsBlocked blocked;
    try {
        for (unsigned i = 0; i < threads; ++i) {
            m_threads.emplace_back([this] { work(); });
        }
    } catch (const std::system_error &) {
        // Those that there are will do; without any, pieces are packed where they are asked for.
    }
}

PackingLine::~PackingLine()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    for (auto &thread : m_threads) {
        thread.join();
    }
}

Piece *PackingLine::takeIdle()
{
    if (m_idle.empty()) {
        return nullptr;
    }
    auto *piece = m_idle.back();
    m_idle.pop_back();
    piece->plainSize = piece->packedSize = 0;
    return piece;
}

void PackingLine::add(Piece *piece)
{
    {
        const std::lock_guard lock(m_mutex);
        m_line.push_back({piece, piece->isStored});
        if (piece->isStored) {
            return;
        }
        m_waiting.push_back(&m_line.back());
    }
    m_changed.notify_all();
}

Piece *PackingLine::takeOldest()
{
    std::unique_lock lock(m_mutex);
    if (m_line.empty()) {
        return nullptr;
    }
    auto &oldest = m_line.front();
    auto *const piece = oldest.piece;
    if (m_threads.empty() && !oldest.isPacked) {
        m_waiting.pop_front();
        Deflater deflater;
        packPiece(deflater, *piece);
    } else {
        m_changed.wait(lock, [&] { return oldest.isPacked; });
    }
    m_line.pop_front();
    return piece;
}

void PackingLine::work()
{
    Deflater deflater;
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [&] { return m_isEnding || !m_waiting.empty(); });
        if (m_isEnding) {
            return;
        }
        auto *const place = m_waiting.front();
        m_waiting.pop_front();
        lock.unlock();
        packPiece(deflater, *place->piece);
        lock.lock();
        place->isPacked = true;
        m_changed.notify_all();
    }
}
