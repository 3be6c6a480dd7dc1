// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/ZipRecords.h"

#include "Platform/FileName.h"

#include <sys/stat.h>

#include <algorithm>
#include <limits>

namespace {

constexpr std::uint64_t longNumber = 0xFFFFFFFF; // and what stands for one
constexpr std::uint64_t manyEntries = 0xFFFF;    // likewise
constexpr std::uint16_t plainVersion = 20;       // 2.0: folders, deflate
constexpr std::uint16_t longVersion = 45;        // 4.5: numbers of 64 bits
constexpr std::uint16_t madeByUnix = 3U << 8U;   // modes are Unix's
constexpr std::uint16_t utf8Flag = 1U << 11U;
constexpr std::uint32_t folderAttribute = 0x10;    // DOS's
constexpr std::uint16_t longNumbersField = 0x0001; // extra field: 64-bit numbers
constexpr std::uint16_t timeField = 0x5455;        // extra field: seconds since 1970
constexpr std::uint8_t lastChangeOnly = 1;         // of the times

class Record {
public:
    Record &add(std::uint64_t value, int bytes)
    {
        for (int i = 0; i < bytes; ++i) {
            m_bytes += static_cast<char>(value >> (8U * static_cast<unsigned>(i)));
        }
        return *this;
    }
    Record &add16(std::uint64_t value) { return add(value, 2); }
    Record &add32(std::uint64_t value) { return add(value, 4); }
    Record &add64(std::uint64_t value) { return add(value, 8); }
    Record &add(const QByteArray &bytes)
    {
        m_bytes += bytes;
        return *this;
    }
    const QByteArray &bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

std::uint64_t size(const QByteArray &bytes)
{
    return static_cast<std::uint64_t>(bytes.size());
}

// In the local time, to two seconds, from 1980 to 2107.
std::uint32_t dosTime(time_t time)
{
    constexpr auto earliest = 80;
    constexpr auto latest = 207;
    struct tm local {};
    ::localtime_r(&time, &local);
    if (local.tm_year < earliest) {
        return 0x00210000; // the first moment of its first day
    }
    if (local.tm_year > latest) {
        return 0xFF9FBF7D; // the last one
    }
    const auto field = [](int value, unsigned shift) {
        return static_cast<std::uint32_t>(value) << shift;
    };
    return field(local.tm_year - earliest, 25) | field(local.tm_mon + 1, 21) |
           field(local.tm_mday, 16) | field(local.tm_hour, 11) | field(local.tm_min, 5) |
           field(local.tm_sec / 2, 0);
}

QByteArray timeExtra(time_t time)
{
    if (time < 0 || time > std::numeric_limits<std::int32_t>::max()) {
        return {}; // the field has 32 bits, and some read them with a sign, others without
    }
    return Record()
        .add16(timeField)
        .add16(5)
        .add(lastChangeOnly, 1)
        .add32(static_cast<std::uint64_t>(time))
        .bytes();
}

std::uint16_t flags(const ZipItem &item)
{
    const auto isAscii = std::all_of(item.name.begin(), item.name.end(), [](char byte) {
        return static_cast<unsigned char>(byte) < 0x80U;
    });
    return !isAscii && isUtf8(item.name) ? utf8Flag : 0;
}

} // namespace

bool isUtf8(const QByteArray &name)
{
    // What is no UTF-8 becomes lone surrogates.
    const auto text = platform::fileNameFromBytes(name);
    for (auto at = decltype(text.size())(0); at < text.size(); ++at) {
        if (text.at(at).isHighSurrogate()) {
            ++at;
        } else if (text.at(at).isLowSurrogate()) {
            return false;
        }
    }
    return true;
}

bool needsLongSizes(const ZipItem &item)
{
    // Packed it may be a little larger.
    return item.mostBytes + item.mostBytes / 1024 + 65536 >= longNumber;
}

QByteArray localHeader(const ZipItem &item, const ZipEntry &entry)
{
    const auto isLong = needsLongSizes(item);
    Record extra;
    if (isLong) {
        extra.add16(longNumbersField).add16(16).add64(entry.size).add64(entry.packedSize);
    }
    extra.add(timeExtra(item.time));
    return Record()
        .add32(0x04034B50)
        .add16(isLong ? longVersion : plainVersion)
        .add16(flags(item))
        .add16(static_cast<std::uint16_t>(entry.method))
        .add32(dosTime(item.time))
        .add32(entry.crc)
        .add32(isLong ? longNumber : entry.packedSize)
        .add32(isLong ? longNumber : entry.size)
        .add16(size(item.name))
        .add16(size(extra.bytes()))
        .add(item.name)
        .add(extra.bytes())
        .bytes();
}

QByteArray centralHeader(const ZipItem &item, const ZipEntry &entry)
{
    Record numbers;
    for (const auto number : {entry.size, entry.packedSize, entry.offset}) {
        if (number >= longNumber) {
            numbers.add64(number);
        }
    }
    Record extra;
    if (!numbers.bytes().isEmpty()) {
        extra.add16(longNumbersField).add16(size(numbers.bytes())).add(numbers.bytes());
    }
    extra.add(timeExtra(item.time));
    const auto version = numbers.bytes().isEmpty() ? plainVersion : longVersion;
    return Record()
        .add32(0x02014B50)
        .add16(madeByUnix | longVersion)
        .add16(version)
        .add16(flags(item))
        .add16(static_cast<std::uint16_t>(entry.method))
        .add32(dosTime(item.time))
        .add32(entry.crc)
        .add32(std::min(entry.packedSize, longNumber))
        .add32(std::min(entry.size, longNumber))
        .add16(size(item.name))
        .add16(size(extra.bytes()))
        .add16(0) // no comment
        .add16(0) // first volume
        .add16(0) // nobody knows what the contents are
        .add32(std::uint64_t{item.mode} << 16U | (S_ISDIR(item.mode) ? folderAttribute : 0))
        .add32(std::min(entry.offset, longNumber))
        .add(item.name)
        .add(extra.bytes())
        .bytes();
}

QByteArray endRecords(std::uint64_t entries, std::uint64_t directoryOffset,
                      std::uint64_t directorySize)
{
    Record record;
    if (entries >= manyEntries || directoryOffset >= longNumber || directorySize >= longNumber) {
        record.add32(0x06064B50)
            .add64(44) // the size of what follows
            .add16(madeByUnix | longVersion)
            .add16(longVersion)
            .add32(0) // this volume
            .add32(0) // that of the directory
            .add64(entries)
            .add64(entries)
            .add64(directorySize)
            .add64(directoryOffset);
        record.add32(0x07064B50)
            .add32(0)
            .add64(directoryOffset + directorySize)
            .add32(1); // volumes
    }
    return record.add32(0x06054B50)
        .add16(0)
        .add16(0)
        .add16(std::min(entries, manyEntries))
        .add16(std::min(entries, manyEntries))
        .add32(std::min(directorySize, longNumber))
        .add32(std::min(directoryOffset, longNumber))
        .add16(0) // no comment
        .bytes();
}
