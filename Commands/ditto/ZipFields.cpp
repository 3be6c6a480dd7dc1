// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/ZipFields.h"

#include "Commands/ditto/Utf8Name.h"

#include <sys/stat.h>

#include <algorithm>
#include <limits>

namespace {

constexpr auto dos = 0;
constexpr auto unixSystem = 3;
constexpr auto otherUnix = 19;
constexpr unsigned folderAttribute = 0x10;
constexpr unsigned timeField = 0x5455;
constexpr unsigned unicodePathField = 0x7075;

std::uint32_t crcOf(const std::string &bytes)
{
    auto crc = std::numeric_limits<std::uint32_t>::max();
    for (const auto byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~crc;
}

// In the local time.
time_t timeOfDos(std::uint64_t value)
{
    const auto bits = [value](unsigned shift, unsigned count) {
        return static_cast<int>(value >> shift & ((1U << count) - 1));
    };
    struct tm local {};
    local.tm_year = bits(25, 7) + 80;
    local.tm_mon = bits(21, 4) - 1;
    local.tm_mday = bits(16, 5);
    local.tm_hour = bits(11, 5);
    local.tm_min = bits(5, 6);
    local.tm_sec = bits(0, 5) * 2;
    local.tm_isdst = -1;
    return ::mktime(&local);
}

// 32 bits, which are some date before 1970 or one after 2038; the other time tells.
time_t timeOfField(std::uint64_t value, std::uint64_t dosTime)
{
    constexpr auto yearBits = 25U;
    constexpr auto year2038 = 2038U - 1980U;
    const auto seconds = static_cast<std::uint32_t>(value);
    return dosTime >> yearBits < year2038 ? time_t{static_cast<std::int32_t>(seconds)}
                                          : time_t{seconds};
}

void readLongNumbers(const std::string &field, ZipEntry &entry)
{
    std::size_t at = 0;
    for (auto *const number : {&entry.size, &entry.packedSize, &entry.offset}) {
        if (*number == longNumber && at + 8 <= field.size()) {
            *number = zipNumber(field, at, 8);
            at += 8;
        }
    }
}

// Null where the field is that of another name, of an unknown form, or empty.
QByteArray unicodePath(const std::string &field, const std::string &name)
{
    constexpr std::size_t before = 5;
    if (field.size() <= before || field[0] != 1 || zipNumber(field, 1, 4) != crcOf(name)) {
        return {};
    }
    const auto path = QByteArray::fromStdString(field.substr(before));
    return isUtf8(path) ? path : QByteArray();
}

mode_t typeOf(const ZipEntry &entry, mode_t mode, std::uint64_t attributes)
{
    if (entry.name.endsWith('/')) {
        return S_IFDIR;
    }
    // A pipe is what zip calls its standard input.
    if ((mode & S_IFMT) != 0 && !S_ISFIFO(mode)) {
        return mode & S_IFMT;
    }
    return mode == 0 && (attributes & folderAttribute) != 0 ? S_IFDIR : S_IFREG;
}

} // namespace

ZipEntry entryOf(const std::string &record, const std::string &name, const std::string &fields)
{
    constexpr auto permissionBits = 07777U;
    const auto dosTime = zipNumber(record, 12, 4);
    const auto plainName = QByteArray::fromStdString(name);
    ZipEntry entry{plainName,
                   plainName,
                   0,
                   {},
                   timeOfDos(dosTime),
                   static_cast<unsigned>(zipNumber(record, 8, 2)),
                   static_cast<unsigned>(zipNumber(record, 10, 2)),
                   static_cast<std::uint32_t>(zipNumber(record, 16, 4)),
                   zipNumber(record, 24, 4),
                   zipNumber(record, 20, 4),
                   zipNumber(record, 42, 4)};
    for (std::size_t at = 0; at + 4 <= fields.size();) {
        const auto kind = zipNumber(fields, at, 2);
        const auto size = zipNumber(fields, at + 2, 2);
        at += 4;
        if (size > fields.size() - at) {
            break;
        }
        const auto field = fields.substr(at, size);
        at += size;
        if (kind == longNumbersField) {
            readLongNumbers(field, entry);
        } else if (kind == timeField && size >= 5 && (zipNumber(field, 0, 1) & 1U) != 0) {
            entry.time = timeOfField(zipNumber(field, 1, 4), dosTime);
        } else if (kind == unicodePathField) {
            if (const auto path = unicodePath(field, name); !path.isNull()) {
                entry.name = path;
            }
        }
    }
    const auto system = zipNumber(record, 5, 1);
    if (system == dos && !entry.name.contains('/')) {
        entry.name.replace('\\', '/');
    }
    const auto attributes = zipNumber(record, 38, 4);
    const auto mode = system == unixSystem || system == otherUnix
                          ? static_cast<mode_t>(attributes >> 16U)
                          : mode_t{0};
    entry.type = typeOf(entry, mode, attributes);
    if (mode != 0) {
        entry.permissions = mode & permissionBits;
    }
    return entry;
}
