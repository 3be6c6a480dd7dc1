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
constexpr unsigned utf8FlagInByte = 1U << 3U; // bit 11 of the flags

Number number(const QByteArray &bytes, Number at, unsigned size)
{
    Number value = 0;
    for (auto i = size; i-- > 0;) {
        const auto index = static_cast<decltype(bytes.size())>(at + i);
        value = value << 8U | static_cast<unsigned char>(bytes.at(index));
    }
    return value;
}

unsigned char withoutUtf8Flag(const QByteArray &bytes, int at)
{
    return static_cast<unsigned char>(static_cast<unsigned char>(bytes.at(at)) & ~utf8FlagInByte);
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

struct Place {
    Number offset = 0;
    Number size = 0;
    Number behind = 0; // where it ends, if nothing stands in front of the archive
    bool isEmpty = false;
};

std::optional<Place> findDirectory(int file)
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
    const auto isEmpty =
        start + at == 0 && number(tail, at + 8, 4) == 0 && number(tail, at + 12, 8) == 0;
    Place directory{number(tail, at + 16, 4), number(tail, at + 12, 4), start + at, isEmpty};
    const auto locator = start + at < locatorSize
                             ? QByteArray()
                             : readAt(file, start + at - locatorSize, locatorSize);
    if (locator.startsWith("PK\x06\x07") && locator.size() == static_cast<int>(locatorSize)) {
        const auto longEnd = number(locator, 8, 8);
        const auto record = readAt(file, longEnd, longEndSize);
        if (record.startsWith("PK\x06\x06") && record.size() == static_cast<int>(longEndSize)) {
            directory = {number(record, 48, 8), number(record, 40, 8), longEnd, false};
        }
    }
    return directory;
}

} // namespace

std::optional<ZipDirectory> readZipDirectory(int file)
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
    ZipDirectory result{directory->isEmpty, {}};
    auto &corrections = result.corrections;
    Window window(file);
    auto at = directory->offset + moved;
    for (;;) {
        const auto entry = window.at(at, entrySize);
        if (entry.size() < static_cast<int>(entrySize) || !entry.startsWith("PK\x01\x02")) {
            break;
        }
        const auto nameSize = number(entry, 28, 2);
        const auto isUtf8 = (number(entry, 9, 1) & utf8FlagInByte) != 0;
        const auto system = static_cast<unsigned char>(number(entry, 5, 1));
        if (isUtf8) {
            corrections.push_back({at + 9, withoutUtf8Flag(entry, 9)});
        }
        if (isUtf8 || (system != 0 && window.at(at + entrySize, nameSize).contains('\\'))) {
            const auto place = number(entry, 42, 4) + moved;
            const auto local = readAt(file, place, 8);
            if (local.size() == 8 && local.startsWith("PK\x03\x04")) {
                corrections.push_back({place + 5, system});
                corrections.push_back({place + 7, withoutUtf8Flag(local, 7)});
            }
        }
        at += entrySize + nameSize + number(entry, 30, 2) + number(entry, 32, 2);
    }
    std::sort(
        corrections.begin(), corrections.end(),
        [](const Correction &one, const Correction &other) { return one.offset < other.offset; });
    return result;
}
