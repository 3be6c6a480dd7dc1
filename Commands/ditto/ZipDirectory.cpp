// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/ZipDirectory.h"

#include "Commands/ditto/Complaint.h"
#include "Commands/ditto/ZipFields.h"
#include "Platform/Core/Basics/FileError.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace {

using Number = std::uint64_t;

constexpr Number endSize = 22;
constexpr Number maxCommentLength = 65535;
constexpr Number maxPadding = 10240; // libarchive fills up its last block in a pipe
constexpr Number locatorSize = 20;
constexpr Number longEndSize = 56;
constexpr Number recordSize = 46;
constexpr Number headerSize = 30;
constexpr Number maxDirectorySize = Number{1} << 30U; // of millions of entries
constexpr Number manyEntries = 0xFFFF;                // and what stands for more
constexpr unsigned encryptedFlags = 0x2041;           // its bytes, strongly, the directory

const std::string endMark("PK\x05\x06");
const std::string headerMark("PK\x03\x04");

bool startsWith(const std::string &bytes, const char *mark)
{
    return bytes.compare(0, 4, mark) == 0;
}

// Less where the file ends before.
std::string readAt(int file, Number offset, Number size)
{
    std::string bytes(size, '\0');
    Number done = 0;
    while (done < size) {
        const auto count = platform::retried([&] {
            return ::pread(file, &bytes[done], size - done, static_cast<off_t>(offset + done));
        });
        if (count <= 0) {
            break;
        }
        done += static_cast<Number>(count);
    }
    bytes.resize(done);
    return bytes;
}

// What an end record says, of 64 bits where there is one.
struct Directory {
    Number behind = 0; // where it ends
    Number entries = 0;
    Number countedBits = manyEntries; // of the number of entries
    Number size = 0;
    Number offset = 0;
    bool isWhole = true; // not one of several parts, nor told in two ways
};

// Whether a number that may stand for a longer one is that one.
bool agrees(Number number, unsigned bytes, Number longer)
{
    return number == longer || number == (Number{1} << (8U * bytes)) - 1;
}

void readLongEnd(int file, Number endAt, const std::string &end, Directory &directory)
{
    const auto locatorAt = endAt - std::min(endAt, locatorSize);
    const auto locator = readAt(file, locatorAt, endAt - locatorAt);
    if (locator.size() < locatorSize || !startsWith(locator, "PK\x06\x07")) {
        return;
    }
    auto at = zipNumber(locator, 8, 8);
    std::string record;
    // Where it is said to be; with a program in front, right before this.
    for (const auto place : {at, locatorAt - std::min(locatorAt, longEndSize)}) {
        at = std::min(place, locatorAt);
        record = readAt(file, at, std::min(locatorAt - at, longEndSize));
        if (startsWith(record, "PK\x06\x06")) {
            break;
        }
    }
    constexpr Number beforeItsSize = 12;
    if (record.size() < longEndSize || !startsWith(record, "PK\x06\x06") ||
        zipNumber(record, 4, 8) != locatorAt - at - beforeItsSize) {
        directory.isWhole = false;
        return;
    }
    directory = {at, zipNumber(record, 32, 8), ~Number{0}, zipNumber(record, 40, 8),
                 zipNumber(record, 48, 8)};
    directory.isWhole = zipNumber(record, 16, 8) == 0 &&
                        zipNumber(record, 24, 8) == directory.entries &&
                        agrees(zipNumber(end, 10, 2), 2, directory.entries) &&
                        agrees(zipNumber(end, 12, 4), 4, directory.size) &&
                        agrees(zipNumber(end, 16, 4), 4, directory.offset);
}

class DirectoryReader {
public:
    DirectoryReader(int file, Number endAt, const std::string &end);

    // Null, or why not.
    const char *read();
    // What is wrong there is this entry.
    const QByteArray &entryName() const { return m_entryName; }
    std::vector<ZipEntry> &entries() { return m_entries; }

private:
    const char *readRecords();
    const char *readHeaders();
    const char *fail(const QByteArray &entryName, const char *reason)
    {
        m_entryName = entryName;
        return reason;
    }
    bool holdsAHeader(Number size) const;

    int m_file;
    Directory m_directory;
    Number m_start = 0;
    Number m_moved = 0;
    std::vector<ZipEntry> m_entries;
    QByteArray m_entryName;
};

DirectoryReader::DirectoryReader(int file, Number endAt, const std::string &end)
    : m_file(file), m_directory{endAt, zipNumber(end, 10, 2), manyEntries, zipNumber(end, 12, 4),
                                zipNumber(end, 16, 4)}
{
    m_directory.isWhole =
        zipNumber(end, 4, 4) == 0 && zipNumber(end, 8, 2) == zipNumber(end, 10, 2);
    readLongEnd(file, endAt, end, m_directory);
}

const char *DirectoryReader::read()
{
    const auto &directory = m_directory;
    if (!directory.isWhole) {
        return "is one of several parts, or damaged";
    }
    if (directory.size > std::min(directory.behind, maxDirectorySize) ||
        directory.offset > directory.behind - directory.size) {
        return "is damaged: its directory is not where it should be";
    }
    // A program in front of the archive, which then unpacks itself, moves everything.
    m_start = directory.behind - directory.size;
    m_moved = m_start - directory.offset;
    if (const auto *const reason = readRecords()) {
        return reason;
    }
    std::sort(m_entries.begin(), m_entries.end(),
              [](const ZipEntry &one, const ZipEntry &other) { return one.offset < other.offset; });
    const auto first = m_entries.empty() ? m_start : std::min(m_entries[0].offset, m_start);
    if (const auto *const reason = readHeaders()) {
        return reason;
    }
    return holdsAHeader(first) ? "is cut short, or behind another archive" : nullptr;
}

const char *DirectoryReader::readRecords()
{
    const auto *const damaged = "is damaged: its directory cannot be read";
    const auto bytes = readAt(m_file, m_start, m_directory.size);
    std::size_t at = 0;
    while (bytes.size() - at >= recordSize && bytes.compare(at, 4, "PK\x01\x02") == 0) {
        const auto record = bytes.substr(at, recordSize);
        const auto nameSize = zipNumber(record, 28, 2);
        const auto fieldsSize = zipNumber(record, 30, 2);
        const auto size = recordSize + nameSize + fieldsSize + zipNumber(record, 32, 2);
        if (size > bytes.size() - at) {
            return damaged;
        }
        const auto name = bytes.substr(at + recordSize, nameSize);
        auto entry = entryOf(record, name, bytes.substr(at + recordSize + nameSize, fieldsSize));
        if (entry.name.isEmpty()) {
            return "has an entry without a name";
        }
        if (name.find('\0') != std::string::npos || entry.name.contains('\0')) {
            return fail(entry.name.left(entry.name.indexOf('\0')), "has a NUL in its name");
        }
        if ((entry.flags & encryptedFlags) != 0) {
            return fail(entry.name, "is encrypted");
        }
        if (zipNumber(record, 34, 2) != 0) {
            return "is one of several parts, or damaged";
        }
        if (entry.offset > m_start - m_moved) {
            return fail(entry.name, "is not where it should be");
        }
        entry.offset += m_moved;
        m_entries.push_back(std::move(entry));
        at += size;
    }
    if (at != m_directory.size) {
        return damaged;
    }
    return (m_entries.size() & m_directory.countedBits) == m_directory.entries
               ? nullptr
               : "is damaged: it has more or fewer entries than it says";
}

const char *DirectoryReader::readHeaders()
{
    Number end = 0; // of the entry before
    for (auto &entry : m_entries) {
        const auto nameSize = static_cast<Number>(entry.plainName.size());
        const auto header = readAt(m_file, entry.offset, headerSize + nameSize);
        if (header.size() < headerSize + nameSize || !startsWith(header, "PK\x03\x04")) {
            return fail(entry.name, "is not where it should be");
        }
        if (zipNumber(header, 26, 2) != nameSize || zipNumber(header, 8, 2) != entry.method ||
            header.compare(headerSize, nameSize, entry.plainName.constData(), nameSize) != 0) {
            return fail(entry.name, "has another name or form in front of it");
        }
        if (entry.offset < end) {
            return fail(entry.name, "overlaps with another entry");
        }
        entry.offset += headerSize + nameSize + zipNumber(header, 28, 2);
        if (entry.offset > m_start || entry.packedSize > m_start - entry.offset) {
            return fail(entry.name, "is not whole");
        }
        end = entry.offset + entry.packedSize;
    }
    return nullptr;
}

// Whether the file begins with an entry, in so many bytes. A program in front knows the mark, too:
// what follows that tells.
bool DirectoryReader::holdsAHeader(Number size) const
{
    constexpr Number most = 65536;
    constexpr auto oldestVersion = 10U;
    constexpr auto newestVersion = 63U;
    constexpr auto lastSystem = 19U;
    constexpr auto lastMethod = 99U;
    for (Number start = 0; start + headerSize < size; start += most) {
        const auto bytes = readAt(m_file, start, std::min(size - start, most + headerSize));
        for (auto at = bytes.find(headerMark);
             at != std::string::npos && at < most && bytes.size() - at > headerSize;
             at = bytes.find(headerMark, at + 1)) {
            const auto nameSize = zipNumber(bytes, at + 26, 2);
            const auto version = zipNumber(bytes, at + 4, 1);
            if (version >= oldestVersion && version <= newestVersion &&
                zipNumber(bytes, at + 5, 1) <= lastSystem &&
                zipNumber(bytes, at + 8, 2) <= lastMethod && nameSize > 0 &&
                start + at + headerSize + nameSize <= size) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

bool readZipDirectory(int file, const QByteArray &path, std::vector<ZipEntry> &entries)
{
    struct stat status {};
    if (::fstat(file, &status) != 0) {
        return complain(path, errno);
    }
    const auto fileSize = static_cast<Number>(status.st_size);
    const auto start = fileSize - std::min(fileSize, endSize + maxCommentLength + maxPadding);
    const auto tail = readAt(file, start, fileSize - start);
    QByteArray complaint = path + ": is not a zip archive, or is cut short";
    constexpr auto maxEnds = 10; // each has the directory read that it tells of
    auto ends = 0;
    auto wholeOnes = 0;
    // A comment may hold the mark, and what looks like an end; so may an archive in the archive.
    for (auto at = tail.find(endMark); at != std::string::npos; at = tail.find(endMark, at + 1)) {
        const auto left = tail.size() - at;
        const auto size = left < endSize ? endSize : endSize + zipNumber(tail, at + 20, 2);
        if (size > left || left - size > maxPadding ||
            tail.find_first_not_of('\0', at + size) != std::string::npos) {
            continue;
        }
        if (ends == maxEnds) {
            return complain(path, "has too many directories");
        }
        DirectoryReader reader(file, start + at, tail.substr(at, endSize));
        if (const auto *const reason = reader.read(); reason == nullptr) {
            ++wholeOnes;
            entries = std::move(reader.entries());
        } else if (ends == 0) {
            const auto &entryName = reader.entryName();
            complaint =
                path + (entryName.isNull() ? QByteArray() : ", " + entryName) + ": " + reason;
        }
        ++ends;
    }
    if (wholeOnes > 1) {
        return complain(path, "has two directories, and it is unclear which one is meant");
    }
    return wholeOnes == 1 || complain(complaint);
}
