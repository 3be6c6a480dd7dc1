// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

// A byte of a zip file that libarchive is to see instead of the one that is there.
struct Correction {
    std::uint64_t offset;
    unsigned char byte;
};

struct ZipDirectory {
    // An archive without entries, which libarchive takes for no archive.
    bool isEmpty = false;
    // What keeps libarchive from changing names, sorted by place: it composes the accents of those
    // that are said to be in UTF-8, so that two could become one, and where the header in front of
    // an entry does not say whether it comes from Unix (which only the directory has to say), it
    // takes backslashes for slashes.
    std::vector<Correction> corrections;
};

// Of an open file; nothing where that is no zip archive.
std::optional<ZipDirectory> readZipDirectory(int file);
