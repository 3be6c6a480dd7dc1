// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/ditto/MemoryReserve.h"
#include "Commands/ditto/ZipDirectory.h"
#include "Platform/Core/Basics/Descriptor.h"

#include <QByteArray>

#include <archive.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

// Reads a zip archive. The directory says what is in it; libarchive unpacks the contents. It is
// given each entry behind a header that is made here, so that it cannot interpret an entry
// differently from the directory.
class ZipReader {
public:
    ZipReader();
    ZipReader(const ZipReader &) = delete;
    ZipReader &operator=(const ZipReader &) = delete;
    ~ZipReader() = default;

    // False, with a complaint, where this is no archive that can be read.
    bool open(const QByteArray &path);

    enum class Step { Done, AtEnd, Failed };

    // Each complains where it fails.
    Step nextEntry();
    Step nextBlock(const char *&data, std::size_t &size);

    // The one that was read last.
    const ZipEntry &entry() const { return m_entries[m_next - 1]; }

private:
    struct Free {
        void operator()(archive *archive) const { ::archive_read_free(archive); }
    };

    static la_ssize_t read(archive *archive, void *self, const void **data);
    std::size_t giveHeader();
    Step fail(const QByteArray &path) const;

    QByteArray m_path;
    platform::Descriptor m_file;
    std::vector<ZipEntry> m_entries;
    std::size_t m_next = 0;
    // What libarchive has been given.
    std::vector<char> m_buffer;
    std::size_t m_given = 0; // entries whose header it has
    std::uint64_t m_at = 0;  // in the last one's packed bytes
    MemoryReserve m_reserve;
    std::unique_ptr<archive, Free> m_archive; // which goes first, since it uses what is above
};
