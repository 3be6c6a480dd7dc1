// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

// Paths, names and sizes as text. Nothing is changed on disk. Part of ZQFileManager.
class ZQFileManagerPaths {
public:
    ZQFileManagerPaths() = delete;

    /// filesMatchingWildcardPath:fromBasePath:
    /// The items whose paths match, component by component, sorted in each folder. A component with
    /// "*" is a pattern for names (platform::NamePattern), any other a name as it is. An absolute
    /// pattern, too, begins at the base; without a base (null) all begin at "/". For a pattern
    /// without "*", the base joined with it, be it there or not, for existing callers.
    static QStringList filesMatchingWildcardPath(const QString &pattern, const QString &basePath);
    /// filesMatchingWildcardPath:
    static QStringList filesMatchingWildcardPath(const QString &pattern);
    /// decodeWildcardPath:fromBasePath:
    /// The first of them; where there is none, the base joined with the pattern as it is written.
    static QString decodeWildcardPath(const QString &pattern, const QString &basePath);

    /// validateFilename:
    /// Takes one dot off the start, then white space off both ends, then all slashes and colons
    /// out. In that order: a dot behind spaces stays, for existing callers. Of "." nothing is left.
    static QString validateFilename(const QString &name);

    /// uniqueFilename:
    /// The path, or where something has it the first free one of "name 2.ext", "name 3.ext", ...
    static QString uniqueFilename(const QString &path);

    /// formatFileSize:
    /// "1023 B", "1.00 KB", "1.00 MB", "5.00 GB": in steps of 1024, and no larger unit. Kept on
    /// purpose for the maker's other programs.
    static QString formatFileSize(double bytes);
};
