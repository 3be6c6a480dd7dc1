// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/ZipReader.h"

#include "Commands/ditto/Complaint.h"
#include "Commands/ditto/ZipFields.h"
#include "Platform/Core/Basics/FileError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>

namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;

// The header in front of an entry, of which only the contents matter.
std::string headerOf(const ZipEntry &entry)
{
    constexpr auto version = 45; // 4.5: numbers of 64 bits
    constexpr auto methodFlags = 6U;
    const std::string name("contents");
    const auto isLong = std::max(entry.packedSize, entry.size) >= longNumber;
    std::string field;
    if (isLong) {
        addZipNumber(field, longNumbersField, 2);
        addZipNumber(field, 16, 2);
        addZipNumber(field, entry.size, 8);
        addZipNumber(field, entry.packedSize, 8);
    }
    std::string header("PK\x03\x04");
    addZipNumber(header, version, 2);
    addZipNumber(header, entry.flags & methodFlags, 2);
    addZipNumber(header, entry.method, 2);
    addZipNumber(header, 0, 4); // time
    addZipNumber(header, entry.crc, 4);
    addZipNumber(header, isLong ? longNumber : entry.packedSize, 4);
    addZipNumber(header, isLong ? longNumber : entry.size, 4);
    addZipNumber(header, name.size(), 2);
    addZipNumber(header, field.size(), 2);
    return header + name + field;
}

} // namespace

ZipReader::ZipReader() : m_buffer(bufferSize), m_archive(::archive_read_new()) {}

bool ZipReader::open(const QByteArray &path)
{
    m_path = path;
    m_file = platform::Descriptor(platform::retried(
        [&] { return ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    struct stat status {};
    if (!m_file.isOpen() || ::fstat(m_file.fd(), &status) != 0) {
        return complain(path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return complain(path, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    if (!readZipDirectory(m_file.fd(), path, m_entries)) {
        return false;
    }
    auto *const archive = m_archive.get();
    if (archive == nullptr) {
        return complain(path, ENOMEM);
    }
    return m_entries.empty() ||
           (::archive_read_support_format_zip_streamable(archive) == ARCHIVE_OK &&
            ::archive_read_open2(archive, this, nullptr, &ZipReader::read, nullptr, nullptr) ==
                ARCHIVE_OK) ||
           fail(path) != Step::Failed;
}

std::size_t ZipReader::giveHeader()
{
    const auto header = headerOf(m_entries[m_given++]);
    m_at = 0;
    std::copy(header.begin(), header.end(), m_buffer.begin());
    return header.size();
}

la_ssize_t ZipReader::read(archive *archive, void *self, const void **data)
{
    auto &reader = *static_cast<ZipReader *>(self);
    auto &entries = reader.m_entries;
    *data = reader.m_buffer.data();
    if (reader.m_given == 0 || reader.m_at == entries[reader.m_given - 1].packedSize) {
        try { // nothing is thrown through libarchive
            return reader.m_given == entries.size() ? 0
                                                    : static_cast<la_ssize_t>(reader.giveHeader());
        } catch (const std::bad_alloc &) {
            ::archive_set_error(archive, ENOMEM, "Cannot allocate memory");
            return ARCHIVE_FATAL;
        }
    }
    const auto &entry = entries[reader.m_given - 1];
    const auto count = platform::retried([&] {
        return ::pread(reader.m_file.fd(), reader.m_buffer.data(),
                       std::min<std::uint64_t>(bufferSize, entry.packedSize - reader.m_at),
                       static_cast<off_t>(entry.offset + reader.m_at));
    });
    if (count <= 0) {
        ::archive_set_error(archive, count < 0 ? errno : EIO, "cannot be read");
        return ARCHIVE_FATAL;
    }
    reader.m_at += static_cast<std::uint64_t>(count);
    return count;
}

ZipReader::Step ZipReader::fail(const QByteArray &path) const
{
    const auto *const reason = ::archive_error_string(m_archive.get());
    complain(path, reason != nullptr ? reason : "cannot be read");
    return Step::Failed;
}

ZipReader::Step ZipReader::nextEntry()
{
    if (m_next == m_entries.size()) {
        return Step::AtEnd;
    }
    ++m_next;
    archive_entry *header = nullptr;
    m_reserve.release();
    const auto result = ::archive_read_next_header(m_archive.get(), &header);
    m_reserve.restore();
    return result == ARCHIVE_OK ? Step::Done : fail(m_path + ", " + entry().name);
}

ZipReader::Step ZipReader::nextBlock(const char *&data, std::size_t &size)
{
    const void *block = nullptr;
    la_int64_t offset = 0;
    const auto result = ::archive_read_data_block(m_archive.get(), &block, &size, &offset);
    if (result == ARCHIVE_EOF) {
        return Step::AtEnd;
    }
    data = static_cast<const char *>(block);
    return result == ARCHIVE_OK ? Step::Done : fail(m_path + ", " + entry().name);
}
