// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/ditto/ZipItem.h"

#include <cstdint>

// The records of a zip file, as bytes (PKWARE's APPNOTE.TXT; the time as Info-ZIP has it).
enum class Method : std::uint16_t { Stored = 0, Deflated = 8 };

struct ZipEntry {
    Method method = Method::Stored;
    std::uint32_t crc = 0;
    std::uint64_t size = 0;
    std::uint64_t packedSize = 0;
    std::uint64_t offset = 0; // of the local header
};

// Whether the local header has room for sizes of 64 bits. That is decided before they are known.
bool needsLongSizes(const ZipItem &item);

QByteArray localHeader(const ZipItem &item, const ZipEntry &entry);
QByteArray centralHeader(const ZipItem &item, const ZipEntry &entry);
QByteArray endRecords(std::uint64_t entries, std::uint64_t directoryOffset,
                      std::uint64_t directorySize);

// Names are in UTF-8 where they say so, else in bytes that nobody has named.
bool isUtf8(const QByteArray &name);
