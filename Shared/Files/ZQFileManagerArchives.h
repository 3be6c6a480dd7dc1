// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

enum class IncludeParent { No, Yes };

// Zip archives, by way of "/usr/bin/ditto". Part of ZQFileManager. The main thread dispatches
// events meanwhile.
class ZQFileManagerArchives {
public:
    ZQFileManagerArchives() = delete;

    /// compressFile:toDestinationFile:includeParent:
    /// An archive that exists already goes to the trash first. Of a folder, with the parent, the
    /// archive holds the folder itself, else what is in it. Others may read the archive where they
    /// may read the source itself and the process's mask allows it: that of a private folder is
    /// private from its first byte. True where the archive exists afterwards. The complaint, where
    /// there is one to fill, gets what the command has said.
    static bool compressFile(const QString &source, const QString &archive,
                             IncludeParent includeParent);
    static bool compressFile(const QString &source, const QString &archive,
                             IncludeParent includeParent, QByteArray *complaint);
    /// compressFile:toDestinationFile:
    static bool compressFile(const QString &source, const QString &archive);

    /// decompressFile:toDestinationFolder:
    /// A folder that exists already is replaced, never merged: it goes to the trash first, and
    /// where it cannot, nothing is unpacked. True where the folder exists afterwards.
    static bool decompressFile(const QString &archive, const QString &folder);
};
