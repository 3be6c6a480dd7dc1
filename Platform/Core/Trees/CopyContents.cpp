// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/CopyContents.h"

#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Trees/CopyPieces.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace platform {
namespace {

constexpr off_t toTheEnd = -1;
constexpr std::size_t bufferSize = 262144;
constexpr off_t statusBlock = 512; // the unit of st_blocks

int writeAll(int to, const char *data, ssize_t size, off_t at)
{
    while (size > 0) {
        const auto count =
            retried([&] { return ::pwrite(to, data, static_cast<std::size_t>(size), at); });
        if (count <= 0) {
            return count < 0 ? errno : EIO;
        }
        data += count;
        size -= count;
        at += count;
    }
    return 0;
}

// Byte by byte, for what the kernel cannot copy itself.
int copyThroughBuffer(int from, int to, off_t at, off_t end, CopyPieces &pieces)
{
    // NOLINTNEXTLINE(modernize-avoid-c-arrays)
    const auto buffer = std::make_unique_for_overwrite<char[]>(bufferSize);
    while (!pieces.areToEnd()) {
        const auto wanted =
            end == toTheEnd ? bufferSize : std::min(bufferSize, static_cast<std::size_t>(end - at));
        if (wanted == 0) {
            return 0;
        }
        const auto count = retried([&] { return ::pread(from, buffer.get(), wanted, at); });
        if (count <= 0) {
            return count < 0 ? errno : 0;
        }
        if (const auto error = writeAll(to, buffer.get(), count, at); error != 0) {
            return error;
        }
        at += count;
        pieces.add(count);
    }
    return ECANCELED;
}

bool kernelCannotCopy(int error)
{
    return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP ||
           error == EPERM || error == EBADF || error == ETXTBSY;
}

int copyRange(int from, int to, off_t at, off_t end, CopyPieces &pieces)
{
    while (at < end) {
        if (pieces.areToEnd()) {
            return ECANCELED;
        }
        auto in = at;
        auto out = at;
        const auto wanted = static_cast<std::size_t>(std::min(end - at, pieces.size()));
        const auto count =
            retried([&] { return ::copy_file_range(from, &in, to, &out, wanted, 0); });
        if (count < 0) {
            return kernelCannotCopy(errno) ? copyThroughBuffer(from, to, at, end, pieces) : errno;
        }
        if (count == 0) { // some file systems say so where they cannot
            return copyThroughBuffer(from, to, at, end, pieces);
        }
        at += count;
        pieces.add(count);
    }
    return 0;
}

int copyBetweenHoles(int from, int to, off_t size, CopyPieces &pieces)
{
    for (off_t at = 0; at < size;) {
        const auto data = ::lseek(from, at, SEEK_DATA);
        if (data < 0) {
            if (errno == ENXIO) {
                break; // nothing but a hole
            }
            return copyRange(from, to, at, size, pieces);
        }
        auto hole = ::lseek(from, data, SEEK_HOLE);
        if (hole <= data) {
            hole = size;
        }
        if (const auto error = copyRange(from, to, data, std::min(hole, size), pieces);
            error != 0) {
            return error;
        }
        at = hole;
    }
    return ::ftruncate(to, size) == 0 ? 0 : errno;
}

int copyAll(int from, const struct stat &status, int to, CopyPieces &pieces)
{
    if (status.st_size == 0) {
        return copyThroughBuffer(from, to, 0, toTheEnd, pieces); // it may tell no size
    }
    if (status.st_blocks * statusBlock < status.st_size) {
        return copyBetweenHoles(from, to, status.st_size, pieces);
    }
    return copyRange(from, to, 0, status.st_size, pieces);
}

} // namespace

int copyContents(int from, const struct stat &status, int to, CopyProgress *progress)
{
    CopyPieces pieces(progress);
    const auto error = copyAll(from, status, to, pieces);
    if (error == 0) {
        pieces.finish(status.st_size);
    }
    return error;
}

} // namespace platform
