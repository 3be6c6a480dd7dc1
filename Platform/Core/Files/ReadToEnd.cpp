// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/ReadToEnd.h"

#include "Platform/Core/Basics/PlatformException.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace platform {
namespace {

using Size = decltype(QByteArray().size());

constexpr qint64 firstSize = 1 << 16;

Exception failure(const QString &reason)
{
    return {QStringLiteral("NSFileHandleOperationException"), reason};
}

// Twice as much each time, so that all the copying together is no more than the data.
void grow(QByteArray &buffer, qint64 maximumSize)
{
    // One byte more shows whether that was all.
    const auto size = std::min(std::max(firstSize, 2 * qint64{buffer.size()}), maximumSize + 1);
    buffer.reserve(static_cast<Size>(size));
    buffer.resize(static_cast<Size>(size));
}

} // namespace

const qint64 maxReadingSize = std::numeric_limits<Size>::max() - 64;

QByteArray readToEnd(int file, qint64 maximumSize)
{
    QByteArray buffer;
    qint64 size = 0;
    for (ssize_t count = 1; count != 0;) {
        if (size == buffer.size()) {
            grow(buffer, maximumSize);
        }
        count = ::read(file, buffer.data() + size, static_cast<std::size_t>(buffer.size() - size));
        if (count < 0 && errno != EINTR) {
            throw failure(qt_error_string(errno));
        }
        size += std::max(count, ssize_t{0});
        if (size > maximumSize) {
            throw failure(QStringLiteral("More than %1 bytes of output").arg(maximumSize));
        }
    }
    buffer.resize(static_cast<Size>(size));
    buffer.squeeze();
    return size == 0 ? QByteArray("") : buffer;
}

} // namespace platform
