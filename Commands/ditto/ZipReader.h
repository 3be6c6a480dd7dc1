// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/ditto/ZipDirectory.h"
#include "Platform/Descriptor.h"

#include <QByteArray>

#include <archive.h>
#include <archive_entry.h>

#include <cstddef>
#include <memory>
#include <vector>

// Reads a zip archive through libarchive, with all names as they are.
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

    // Of the entry that was read last.
    QByteArray name() const;
    archive_entry *entry() const { return m_entry; }

private:
    struct Free {
        void operator()(archive *archive) const { ::archive_read_free(archive); }
    };

    static la_ssize_t read(archive *archive, void *self, const void **data);
    static la_int64_t seek(archive *archive, void *self, la_int64_t offset, int whence);
    Step fail(const QByteArray &path) const;

    QByteArray m_path;
    platform::Descriptor m_file;
    ZipDirectory m_directory;
    std::vector<char> m_buffer;
    la_int64_t m_position = 0;
    std::unique_ptr<archive, Free> m_archive; // which goes first, since it uses what is above
    archive_entry *m_entry = nullptr;
};
