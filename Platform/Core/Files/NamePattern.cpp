// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/NamePattern.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Text/FileName.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace platform {
namespace {

constexpr std::uint32_t bytesAsCharacters = 0x110000; // behind the last Unicode character

// Takes the character at the place; there must be one.
std::uint32_t takeCharacter(const char *&at, const char *end)
{
    const auto byteAt = [&](std::ptrdiff_t i) -> std::uint32_t {
        return i < end - at ? static_cast<unsigned char>(at[i]) : 0U; // NOLINT
    };
    const auto first = byteAt(0);
    if (first < 0x80U) {
        ++at;
        return first;
    }
    const std::ptrdiff_t size = first < 0xE0U ? 2 : first < 0xF0U ? 3 : 4;
    auto character = first & (0x7FU >> static_cast<unsigned>(size));
    auto isWhole = first >= 0xC2U && first <= 0xF4U;
    for (std::ptrdiff_t i = 1; isWhole && i < size; ++i) {
        isWhole = (byteAt(i) & 0xC0U) == 0x80U;
        character = character << 6U | (byteAt(i) & 0x3FU);
    }
    isWhole = isWhole && (character < 0xD800U || character >= 0xE000U) && character <= 0x10FFFFU &&
              !(size == 3 && character < 0x800U) && !(size == 4 && character < 0x10000U);
    at += isWhole ? size : 1;
    return isWhole ? character : bytesAsCharacters + first;
}

// Whether what the entry of a folder leads to exists; only a link may lead nowhere.
bool leadsSomewhere(int folder, const FolderEntries &entries)
{
    struct stat status {};
    return (entries.type() != DT_LNK && entries.type() != DT_UNKNOWN) ||
           ::fstatat(folder, entries.name(), &status, 0) == 0;
}

// Without a second piece of memory for the names that are the usual ones.
QStringList pathsOf(const QString &folder, const std::vector<std::string_view> &names)
{
    const auto start = folder.endsWith(u'/') ? folder : folder + u'/';
    QStringList paths;
    paths.reserve(static_cast<int>(names.size()));
    for (const auto name : names) {
        const auto size = static_cast<int>(name.size());
        const auto isAscii = std::all_of(name.begin(), name.end(), [](char byte) {
            return static_cast<unsigned char>(byte) < 0x80U;
        });
        QString path;
        path.reserve(start.size() + size);
        path += start;
        if (isAscii) {
            path += QLatin1String(name.data(), size);
        } else {
            path += fileNameFromBytes(QByteArray(name.data(), size));
        }
        paths << path;
    }
    return paths;
}

} // namespace

NamePattern::NamePattern(const QByteArray &pattern)
{
    const auto *at = pattern.constData();
    const auto *const end = at + pattern.size();
    while (at != end) {
        const auto *const start = at;
        const auto character = takeCharacter(at, end);
        using Kind = Part::Kind;
        if (character == U'*') {
            if (m_parts.empty() || m_parts.back().kind != Kind::AnyRun) {
                m_parts.push_back({Kind::AnyRun, {}, false, {}});
            }
        } else if (character == U'?') {
            m_parts.push_back({Kind::AnyOne, {}, false, {}});
        } else if (character != U'[' || !takeSet(at, end)) {
            if (m_parts.empty() || m_parts.back().kind != Kind::Literal) {
                m_parts.push_back({});
            }
            m_parts.back().bytes += QByteArray(start, static_cast<int>(at - start));
        }
    }
    for (const auto &part : m_parts) {
        m_fewest += part.kind == Part::Kind::Literal  ? static_cast<std::size_t>(part.bytes.size())
                    : part.kind == Part::Kind::AnyRun ? 0
                                                      : 1;
    }
}

// What stands behind the bracket; false, and nothing is taken, where that is never closed.
bool NamePattern::takeSet(const char *&at, const char *end)
{
    Part set{Part::Kind::Set, {}, false, {}};
    const auto *next = at;
    if (next != end && (*next == '!' || *next == '^')) {
        set.isNegated = true;
        ++next;
    }
    // A bracket right at the start belongs to the set.
    for (auto isFirst = true; next != end && (*next != ']' || isFirst); isFirst = false) {
        const auto first = takeCharacter(next, end);
        auto last = first;
        if (end - next >= 2 && *next == '-' && next[1] != ']') { // NOLINT(*-pointer-arithmetic)
            ++next;
            last = takeCharacter(next, end);
        }
        set.ranges.push_back({first, last});
    }
    if (next == end) {
        return false;
    }
    at = next + 1; // NOLINT(*-pointer-arithmetic)
    m_parts.push_back(std::move(set));
    return true;
}

bool NamePattern::isIn(const Part &set, std::uint32_t character)
{
    const auto isListed =
        std::any_of(set.ranges.begin(), set.ranges.end(), [&](const Part::Range &range) {
            return range.first <= character && character <= range.last;
        });
    return isListed != set.isNegated;
}

// Takes what a part other than a run stands for.
bool NamePattern::step(const Part &part, const char *&at, const char *end)
{
    if (part.kind == Part::Kind::Literal) {
        const auto size = static_cast<std::size_t>(part.bytes.size());
        if (static_cast<std::size_t>(end - at) < size ||
            std::memcmp(at, part.bytes.constData(), size) != 0) {
            return false;
        }
        at += size; // NOLINT(*-pointer-arithmetic)
        return true;
    }
    if (at == end) {
        return false;
    }
    const auto character = takeCharacter(at, end);
    return part.kind == Part::Kind::AnyOne || isIn(part, character);
}

bool NamePattern::matches(const char *name, std::size_t size) const
{
    if (size < m_fewest) {
        return false;
    }
    const auto *at = name;
    const auto *const end = name + size; // NOLINT(*-pointer-arithmetic)
    auto part = m_parts.begin();
    // Where the last run began; it takes one more character whenever what follows does not fit.
    auto runEnd = m_parts.end();
    const char *runAt = nullptr;
    for (;;) {
        if (part != m_parts.end() && part->kind == Part::Kind::AnyRun) {
            runEnd = ++part;
            runAt = at;
            if (part == m_parts.end()) {
                return true;
            }
            if (part + 1 == m_parts.end() && part->kind == Part::Kind::Literal) {
                // The usual "*.log".
                const auto *tail = end - part->bytes.size(); // NOLINT(*-pointer-arithmetic)
                return tail >= at && step(*part, tail, end);
            }
        } else if (part == m_parts.end() ? at == end : step(*part, at, end)) {
            if (part == m_parts.end()) {
                return true;
            }
            ++part;
        } else {
            if (runAt == nullptr || runAt == end) {
                return false;
            }
            takeCharacter(runAt, end);
            at = runAt;
            part = runEnd;
        }
    }
}

QStringList itemsInFolderMatching(const QString &folder, const QString &pattern)
{
    const auto bytes = fileNameBytes(folder);
    if (bytes.contains('\0')) {
        return {};
    }
    const Descriptor opened(
        retried([&] { return ::open(bytes.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!opened.isOpen()) {
        return {};
    }
    const NamePattern matcher(fileNameBytes(pattern));
    // All names in one piece: there may be very many.
    std::string all;
    std::vector<std::size_t> ends;
    FolderEntries entries(opened.number());
    while (entries.next()) {
        const auto size = std::strlen(entries.name());
        if (matcher.matches(entries.name(), size) && leadsSomewhere(opened.number(), entries)) {
            all.append(entries.name(), size);
            ends.push_back(all.size());
        }
    }
    if (entries.error() != 0) {
        return {};
    }
    std::vector<std::string_view> names;
    names.reserve(ends.size());
    std::size_t start = 0;
    for (const auto end : ends) {
        names.push_back(std::string_view(all).substr(start, end - start));
        start = end;
    }
    std::sort(names.begin(), names.end());
    return pathsOf(folder, names);
}

} // namespace platform
