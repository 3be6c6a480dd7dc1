// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/ZipDirectory.h"

#include "Platform/FileError.h"

#include <QByteArray>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace {

using Number = std::uint64_t;

constexpr Number endSize = 22;
constexpr Number longestComment = 65535;
constexpr Number locatorSize = 20;
constexpr Number longEndSize = 56;
constexpr Number entrySize = 46;

Number number(const QByteArray &bytes, Number at, unsigned size)
{
    Number value = 0;
    for (auto i = size; i-- > 0;) {
        const auto index = static_cast<decltype(bytes.size())>(at + i);
        value = value << 8U | static_cast<unsigned char>(bytes.at(index));
    }
    return value;
}

// Less where the file ends before.
QByteArray readAt(int file, Number offset, Number size)
{
    QByteArray bytes(static_cast<int>(size), Qt::Uninitialized);
    Number done = 0;
    while (done < size) {
        const auto count = platform::retried([&] {
            return ::pread(file, bytes.data() + done, size - done,
                           static_cast<off_t>(offset + done));
        });
        if (count <= 0) {
            break;
        }
        done += static_cast<Number>(count);
    }
    bytes.truncate(static_cast<int>(done));
    return bytes;
}

// Reads forward through a part of the file.
class Window {
public:
    explicit Window(int file) : m_file(file) {}

    // That many bytes from there; fewer at the end of the file.
    QByteArray at(Number offset, Number size)
    {
        const auto end = m_start + static_cast<Number>(m_bytes.size());
        if (offset < m_start || offset + size > end) {
            m_bytes = readAt(m_file, offset, 65536);
            m_start = offset;
        }
        return m_bytes.mid(static_cast<int>(offset - m_start), static_cast<int>(size));
    }

private:
    int m_file;
    Number m_start = 0;
    QByteArray m_bytes;
};

struct Directory {
    Number offset = 0;
    Number size = 0;
    Number behind = 0; // where it ends, if nothing stands in front of the archive
};

std::optional<Directory> findDirectory(int file)
{
    struct stat status {};
    if (::fstat(file, &status) != 0 || status.st_size < static_cast<off_t>(endSize)) {
        return std::nullopt;
    }
    const auto fileSize = static_cast<Number>(status.st_size);
    const auto start = fileSize - std::min(fileSize, endSize + longestComment);
    const auto tail = readAt(file, start, fileSize - start);
    const auto place = tail.lastIndexOf("PK\x05\x06", tail.size() - static_cast<int>(endSize));
    if (place < 0) {
        return std::nullopt;
    }
    const auto at = static_cast<Number>(place);
    Directory directory{number(tail, at + 16, 4), number(tail, at + 12, 4), start + at};
    const auto locator = start + at < locatorSize
                             ? QByteArray()
                             : readAt(file, start + at - locatorSize, locatorSize);
    if (locator.startsWith("PK\x06\x07") && locator.size() == static_cast<int>(locatorSize)) {
        const auto longEnd = number(locator, 8, 8);
        const auto record = readAt(file, longEnd, longEndSize);
        if (record.startsWith("PK\x06\x06") && record.size() == static_cast<int>(longEndSize)) {
            directory = {number(record, 48, 8), number(record, 40, 8), longEnd};
        }
    }
    return directory;
}

} // namespace

std::optional<std::vector<std::uint64_t>> findUtf8Flags(int file)
{
    const auto directory = findDirectory(file);
    if (!directory) {
        return std::nullopt;
    }
    // A program in front of the archive, which then unpacks itself, moves everything.
    Number moved = 0;
    if (directory->behind >= directory->size + directory->offset) {
        moved = directory->behind - directory->size - directory->offset;
        if (!readAt(file, directory->offset + moved, 4).startsWith("PK\x01\x02")) {
            moved = 0;
        }
    }
    std::vector<std::uint64_t> flags;
    Window window(file);
    auto at = directory->offset + moved;
    for (;;) {
        const auto entry = window.at(at, entrySize);
        if (entry.size() < static_cast<int>(entrySize) || !entry.startsWith("PK\x01\x02")) {
            break;
        }
        if ((number(entry, 9, 1) & utf8FlagInByte) != 0) {
            flags.push_back(at + 9);
            const auto local = number(entry, 42, 4) + moved;
            if (readAt(file, local, 4).startsWith("PK\x03\x04")) {
                flags.push_back(local + 7);
            }
        }
        at += entrySize + number(entry, 28, 2) + number(entry, 30, 2) + number(entry, 32, 2);
    }
    std::sort(flags.begin(), flags.end());
    return flags;
}
