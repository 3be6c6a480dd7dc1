// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/ZipWriter.h"

#include "Platform/FileError.h"

#include <unistd.h>

#include <cerrno>

namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;
constexpr auto mostDirectoryBytes = 1 << 30; // of millions of entries

int writeAt(int file, const QByteArray &bytes, std::uint64_t offset)
{
    for (decltype(bytes.size()) done = 0; done < bytes.size();) {
        const auto count = platform::retried([&] {
            return ::pwrite(file, bytes.constData() + done,
                            static_cast<std::size_t>(bytes.size() - done),
                            static_cast<off_t>(offset) + done);
        });
        if (count <= 0) {
            return count < 0 ? errno : EIO;
        }
        done += static_cast<decltype(done)>(count);
    }
    return 0;
}

} // namespace

int ZipWriter::flush()
{
    const auto error = m_file.write(m_buffer.data(), m_buffer.size());
    m_buffer.clear();
    return error;
}

int ZipWriter::put(const char *data, std::size_t size)
{
    m_offset += size;
    if (m_buffer.size() + size > bufferSize) {
        if (const auto error = flush(); error != 0) {
            return error;
        }
        if (size > bufferSize) {
            return m_file.write(data, size);
        }
    }
    m_buffer.insert(m_buffer.end(), data, data + size); // NOLINT(*-pointer-arithmetic)
    return 0;
}

int ZipWriter::begin(const Piece &piece)
{
    m_item = piece.item;
    m_entry = {piece.isStored ? Method::Stored : Method::Deflated, 0, 0, 0, m_offset};
    if (piece.isLast) {
        m_entry.crc = piece.crc;
        m_entry.size = piece.totalSize;
        m_entry.packedSize = piece.isStored ? piece.plainSize : piece.packedSize;
    }
    return put(localHeader(m_item, m_entry));
}

int ZipWriter::end(const Piece &piece)
{
    if (!piece.isFirst) {
        const auto bytes = reinterpret_cast<const char *>(&emptyLastBlock[0]); // NOLINT
        if (const auto error = put(bytes, sizeof emptyLastBlock); error != 0) {
            return error;
        }
        m_entry.packedSize += sizeof emptyLastBlock;
        m_entry.crc = piece.crc;
        m_entry.size = piece.totalSize;
        auto error = flush();
        if (error == 0) {
            error = writeAt(m_file.descriptor(), localHeader(m_item, m_entry), m_entry.offset);
        }
        if (error != 0) {
            return error;
        }
    }
    m_directory += centralHeader(m_item, m_entry);
    ++m_entries;
    return m_directory.size() < mostDirectoryBytes ? 0 : EFBIG;
}

int ZipWriter::write(const Piece &piece)
{
    if (piece.isFirst) {
        if (const auto error = begin(piece); error != 0) {
            return error;
        }
    }
    const auto size = piece.isStored ? piece.plainSize : piece.packedSize;
    const auto *data = piece.isStored ? piece.plain.data() : piece.packed.data();
    if (!piece.isStored && size == 0) {
        return ENOMEM; // could not be packed
    }
    if (!(piece.isFirst && piece.isLast)) {
        m_entry.packedSize += size;
    }
    const auto error = put(reinterpret_cast<const char *>(data), size); // NOLINT
    return error != 0 || !piece.isLast ? error : end(piece);
}

int ZipWriter::finish()
{
    const auto offset = m_offset;
    if (const auto error = put(m_directory); error != 0) {
        return error;
    }
    const auto error = put(endRecords(m_entries, offset, sizeOf(m_directory)));
    return error != 0 ? error : flush();
}
