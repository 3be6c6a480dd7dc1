// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QStringList>

#include <cstddef>
#include <string>

namespace platform {

// A shell-style pattern for names: "*" is any run of characters, "?" one character, a bracketed set
// one character of the set ("[a-f_]"; "[!a]" and "[^a]" one that is not in it). Case counts, and a
// leading dot is a character like any other. A bracket that is not closed stands for itself; there
// is no escaping but by a set of one, "[*]". A character is a Unicode one; a byte that is no UTF-8
// is one, too.
class NamePattern {
public:
    explicit NamePattern(const QByteArray &pattern);

    // In no more time than the product of both lengths.
    bool matches(const char *name, std::size_t size) const;

private:
    std::size_t behindPart(std::size_t at, char32_t character) const;

    std::u32string m_pattern;
};

// The paths of a folder's items whose names match and which lead to something that exists, links
// followed, sorted by the names' bytes. Empty where the folder cannot be read.
QStringList itemsInFolderMatching(const QString &folder, const QString &pattern);

} // namespace platform
