// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/ZipReader.h"

#include "Commands/ditto/Complaint.h"
#include "Platform/FileError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {
constexpr std::size_t bufferSize = std::size_t{256} * 1024;
} // namespace

ZipReader::ZipReader() : m_buffer(bufferSize), m_archive(::archive_read_new()) {}

bool ZipReader::open(const QByteArray &path)
{
    m_path = path;
    m_file = platform::Descriptor(platform::retried(
        [&] { return ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    struct stat status {};
    if (!m_file.isOpen() || ::fstat(m_file.number(), &status) != 0) {
        return complain(path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return complain(path, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    auto directory = readZipDirectory(m_file.number());
    if (!directory) {
        return complain(path, "is no zip archive, or a damaged one");
    }
    m_directory = std::move(*directory);
    if (m_directory.isEmpty) {
        return true;
    }
    auto *const archive = m_archive.get();
    if (archive == nullptr) {
        return complain(path, ENOMEM);
    }
    // Not the form that is read without its directory: what has lost that is not whole.
    if (::archive_read_support_format_zip_seekable(archive) != ARCHIVE_OK ||
        ::archive_read_set_seek_callback(archive, &ZipReader::seek) != ARCHIVE_OK ||
        ::archive_read_open2(archive, this, nullptr, &ZipReader::read, nullptr, nullptr) !=
            ARCHIVE_OK) {
        fail(path);
        return false;
    }
    return true;
}

la_ssize_t ZipReader::read(archive *archive, void *self, const void **data)
{
    auto &reader = *static_cast<ZipReader *>(self);
    auto *const bytes = reader.m_buffer.data();
    const auto count = platform::retried([&] {
        return ::pread(reader.m_file.number(), bytes, reader.m_buffer.size(), reader.m_position);
    });
    if (count < 0) {
        ::archive_set_error(archive, errno, "cannot be read");
        return ARCHIVE_FATAL;
    }
    const auto start = static_cast<std::uint64_t>(reader.m_position);
    const auto end = start + static_cast<std::uint64_t>(count);
    const auto &all = reader.m_directory.corrections;
    auto next = std::lower_bound(
        all.begin(), all.end(), start,
        [](const Correction &one, std::uint64_t offset) { return one.offset < offset; });
    for (; next != all.end() && next->offset < end; ++next) {
        reader.m_buffer[next->offset - start] = static_cast<char>(next->byte);
    }
    reader.m_position += count;
    *data = bytes;
    return count;
}

la_int64_t ZipReader::seek(archive *archive, void *self, la_int64_t offset, int whence)
{
    auto &reader = *static_cast<ZipReader *>(self);
    struct stat status {};
    if (::fstat(reader.m_file.number(), &status) != 0) {
        ::archive_set_error(archive, errno, "cannot be read");
        return ARCHIVE_FATAL;
    }
    const auto from = whence == SEEK_SET   ? 0
                      : whence == SEEK_CUR ? reader.m_position
                                           : la_int64_t{status.st_size};
    reader.m_position = std::max<la_int64_t>(from + offset, 0);
    return reader.m_position;
}

ZipReader::Step ZipReader::fail(const QByteArray &path) const
{
    const auto *const reason = ::archive_error_string(m_archive.get());
    complain(path, reason != nullptr ? reason : "cannot be read");
    return Step::Failed;
}

ZipReader::Step ZipReader::nextEntry()
{
    if (m_directory.isEmpty) {
        return Step::AtEnd;
    }
    const auto result = ::archive_read_next_header(m_archive.get(), &m_entry);
    if (result == ARCHIVE_EOF) {
        return Step::AtEnd;
    }
    return result == ARCHIVE_OK ? Step::Done : fail(m_path);
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
    return result == ARCHIVE_OK ? Step::Done : fail(m_path + ", " + name());
}

QByteArray ZipReader::name() const
{
    return {::archive_entry_pathname(m_entry)};
}
