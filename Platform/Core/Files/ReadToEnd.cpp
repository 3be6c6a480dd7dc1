// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/ReadToEnd.h"

#include "Platform/Core/Basics/PlatformException.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>

namespace platform {
namespace {

using Size = decltype(QByteArray().size());

constexpr qint64 firstSize = 1 << 16;
constexpr qint64 onePiece = 1 << 20; // what a pipe holds at most

Exception failure(const QString &reason)
{
    return {QStringLiteral("NSFileHandleOperationException"), reason};
}

// Has the system provide the memory of a piece at once: one fault for every page of it costs more
// than the reading itself.
void provide(char *room, qint64 size)
{
    static const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<std::uintptr_t>(room); // NOLINT(*-reinterpret-cast)
    const auto skipped = (page - start % page) % page;
    if (const auto length = static_cast<std::size_t>(size); length > skipped) {
        ::madvise(room + skipped, length - skipped, MADV_POPULATE_WRITE);
    }
}

// Twice as much each time, so that all the copying together is no more than the data.
void grow(QByteArray &buffer, qint64 maximumSize)
{
    const auto size = std::min(std::max(firstSize, 2 * qint64{buffer.size()}), maximumSize);
    buffer.reserve(static_cast<Size>(size));
    buffer.resize(static_cast<Size>(size));
}

} // namespace

const qint64 largestReading = std::numeric_limits<Size>::max() - 64;

QByteArray readToEnd(int file, qint64 maximumSize)
{
    QByteArray buffer;
    qint64 size = 0;
    qint64 provided = onePiece; // a small output is not worth it
    for (;;) {
        if (size == buffer.size() && size < maximumSize) {
            grow(buffer, maximumSize);
        }
        if (size >= provided) {
            const auto next = std::min(buffer.size() - size, onePiece);
            provide(buffer.data() + size, next);
            provided = size + next;
        }
        // Where all room is used, one byte shows whether that was all.
        char surplus = 0;
        const bool isFull = size == buffer.size();
        const auto room = std::min(buffer.size() - size, onePiece);
        const auto count = isFull
                               ? ::read(file, &surplus, 1)
                               : ::read(file, buffer.data() + size, static_cast<std::size_t>(room));
        if (count == 0) {
            break;
        }
        if (count < 0 && errno != EINTR) {
            throw failure(qt_error_string(errno));
        }
        if (count > 0 && isFull) {
            throw failure(QStringLiteral("More than %1 bytes of output").arg(maximumSize));
        }
        size += std::max(count, ssize_t{0});
    }
    buffer.resize(static_cast<Size>(size));
    buffer.squeeze();
    return size == 0 ? QByteArray("") : buffer;
}

} // namespace platform
