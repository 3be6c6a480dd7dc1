// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <optional>
#include <vector>

// An entry of a zip archive, as the archive's directory has it.
struct ZipEntry {
    // Its bytes; in UTF-8 where the field Unicode Path holds it. Slashes between folders.
    QByteArray name;
    QByteArray plainName; // as it is in front of the entry's bytes
    mode_t type = 0;      // S_IFREG and its like
    std::optional<mode_t> permissions;
    time_t time = 0;
    unsigned flags = 0;
    unsigned method = 0;
    std::uint32_t crc = 0;
    std::uint64_t size = 0;
    std::uint64_t packedSize = 0;
    std::uint64_t offset = 0; // of the packed bytes in the file
};

// Reads the directory of an open file, entries in the order of their bytes, and holds it against
// the whole file (PKWARE's APPNOTE.TXT): one end record that reaches to the end of the file,
// but for zeros, the directory right in front of it with as many entries as it says, each entry in
// bytes of its own and under the same name there, and no entry that the directory does not know.
// False after a complaint, which has the path.
bool readZipDirectory(int file, const QByteArray &path, std::vector<ZipEntry> &entries);
