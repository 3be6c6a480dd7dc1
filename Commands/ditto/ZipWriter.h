// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/ditto/PackingLine.h"
#include "Commands/ditto/ZipRecords.h"
#include "Platform/UnnamedFile.h"

// Writes a zip file from pieces, in their order, into a file that has no name yet.
class ZipWriter {
public:
    explicit ZipWriter(const platform::UnnamedFile &file) : m_file(file) {}

    // Each: 0, else the reason (errno).
    int write(const Piece &piece);
    // Ends the archive.
    int finish();

private:
    int begin(const Piece &piece);
    int end(const Piece &piece);
    int put(const char *data, std::size_t size);
    int put(const QByteArray &bytes) { return put(bytes.constData(), sizeOf(bytes)); }
    int flush();
    static std::size_t sizeOf(const QByteArray &bytes)
    {
        return static_cast<std::size_t>(bytes.size());
    }

    const platform::UnnamedFile &m_file;
    ZipItem m_item;
    ZipEntry m_entry;
    std::uint64_t m_offset = 0; // what is in the buffer included
    std::vector<char> m_buffer;
    QByteArray m_directory;
    std::uint64_t m_entries = 0;
};
