// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/ditto/MemoryReserve.h"
#include "Platform/Core/Files/UnnamedFile.h"

#include <QByteArray>

#include <archive.h>
#include <archive_entry.h>
#include <sys/stat.h>

#include <cstddef>
#include <memory>

// Writes a zip archive through libarchive into a file that has no name yet. Each operation: 0, else
// the reason (errno).
class ZipWriter {
public:
    explicit ZipWriter(const platform::UnnamedFile &file);
    ~ZipWriter();
    ZipWriter(const ZipWriter &) = delete;
    ZipWriter &operator=(const ZipWriter &) = delete;

    int begin();
    // The name of a folder ends in a slash. What follows are the contents of a file, no more of
    // them than the status says.
    int beginItem(const QByteArray &name, const struct stat &status, const QByteArray &linkTarget);
    int write(const char *data, std::size_t size);
    // Ends the archive.
    int finish();

private:
    struct Free {
        void operator()(archive *archive) const { ::archive_write_free(archive); }
        void operator()(archive_entry *entry) const { ::archive_entry_free(entry); }
    };

    int errorOf(la_ssize_t result) const;
    static la_ssize_t writeBytes(archive *archive, void *self, const void *data, std::size_t size);

    const platform::UnnamedFile &m_file;
    locale_t m_utf8;
    std::unique_ptr<archive, Free> m_archive;
    std::unique_ptr<archive_entry, Free> m_entry;
    MemoryReserve m_reserve;
};
