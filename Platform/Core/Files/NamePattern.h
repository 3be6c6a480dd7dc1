// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <vector>

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
    struct Part {
        enum class Kind { Literal, AnyRun, AnyOne, Set };
        struct Range {
            std::uint32_t first;
            std::uint32_t last;
        };

        Kind kind = Kind::Literal;
        QByteArray bytes; // Literal
        bool isNegated = false;
        std::vector<Range> ranges; // Set
    };

    bool takeSet(const char *&at, const char *end);
    static bool isIn(const Part &set, std::uint32_t character);
    static bool step(const Part &part, const char *&at, const char *end);

    std::vector<Part> m_parts;
    std::size_t m_fewest = 0; // bytes of a name that matches
};

// The paths of a folder's items whose names match and which lead to something that exists, links
// followed, sorted by the names' bytes. Empty where the folder cannot be read.
QStringList itemsInFolderMatching(const QString &folder, const QString &pattern);

} // namespace platform
