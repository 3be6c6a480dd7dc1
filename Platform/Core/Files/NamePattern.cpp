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
#include <vector>

namespace platform {
namespace {

constexpr auto none = std::u32string::npos;

// A byte that is no UTF-8 is the lone surrogate that stands for it.
std::u32string charactersOf(const QByteArray &name)
{
    const auto text = fileNameFromBytes(name);
    std::u32string characters;
    for (auto at = text.begin(); at != text.end(); ++at) {
        const auto next = at + 1;
        const auto isPair = at->isHighSurrogate() && next != text.end() && next->isLowSurrogate();
        characters += isPair ? QChar::surrogateToUcs4(*at, *next) : at->unicode();
        at = isPair ? next : at;
    }
    return characters;
}

// Whether what the entry of a folder leads to exists; only a link may lead nowhere.
bool destinationExists(int folder, const FolderEntries &entries)
{
    struct stat status {};
    return (entries.type() != DT_LNK && entries.type() != DT_UNKNOWN) ||
           ::fstatat(folder, entries.name(), &status, 0) == 0;
}

} // namespace

NamePattern::NamePattern(const QByteArray &pattern) : m_pattern(charactersOf(pattern)) {}

// Where the part of the pattern that stands for one character ends; none where it does not stand
// for this one.
std::size_t NamePattern::behindPart(std::size_t at, char32_t character) const
{
    const auto size = m_pattern.size();
    // A bracket right at the start belongs to the set.
    const auto isNegated =
        at + 1 < size && (m_pattern[at + 1] == U'!' || m_pattern[at + 1] == U'^');
    const auto start = at + (isNegated ? 2 : 1);
    if (m_pattern[at] != U'[' || m_pattern.find(U']', start + 1) == none) {
        return m_pattern[at] == U'?' || m_pattern[at] == character ? at + 1 : none;
    }
    auto isListed = false;
    auto next = start;
    for (; next == start || m_pattern[next] != U']'; ++next) {
        const auto first = m_pattern[next];
        if (next + 2 < size && m_pattern[next + 1] == U'-' && m_pattern[next + 2] != U']') {
            next += 2;
        }
        isListed = isListed || (first <= character && character <= m_pattern[next]);
    }
    return isListed != isNegated ? next + 1 : none;
}

bool NamePattern::matches(const char *name, std::size_t size) const
{
    const auto characters = charactersOf(QByteArray(name, static_cast<int>(size)));
    std::size_t part = 0;
    // Behind the last run; it takes one more character whenever what follows does not fit.
    auto afterRun = none;
    std::size_t runEnd = 0;
    for (std::size_t at = 0; at < characters.size();) {
        if (part < m_pattern.size() && m_pattern[part] == U'*') {
            afterRun = ++part;
            runEnd = at;
            continue;
        }
        part = part < m_pattern.size() ? behindPart(part, characters[at]) : none;
        if (part != none) {
            ++at;
        } else if (afterRun != none) {
            part = afterRun;
            at = ++runEnd;
        } else {
            return false;
        }
    }
    return m_pattern.find_first_not_of(U'*', part) == none;
}

QStringList itemsInFolderMatching(const QString &folder, const QString &pattern)
{
    const auto bytes = fileNameBytes(folder);
    if (bytes.contains('\0')) {
        return {};
    }
    const Descriptor opened(
        retried([&] { return ::open(bytes.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    const NamePattern matcher(fileNameBytes(pattern));
    std::vector<QByteArray> names;
    FolderEntries entries(opened.fd());
    while (entries.next()) {
        const QByteArray name(entries.name());
        if (matcher.matches(name.constData(), static_cast<std::size_t>(name.size())) &&
            destinationExists(opened.fd(), entries)) {
            names.push_back(name);
        }
    }
    if (entries.error() != 0) {
        return {};
    }
    std::sort(names.begin(), names.end());
    const auto start = folder.endsWith(u'/') ? folder : folder + u'/';
    QStringList paths;
    for (const auto &name : names) {
        paths << start + fileNameFromBytes(name);
    }
    return paths;
}

} // namespace platform
