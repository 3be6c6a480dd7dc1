// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/ditto/ZipWriter.h"
#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Files/ItemPlace.h"

#include <sys/stat.h>

#include <functional>

// Reads an item with all that is in it and gives it to the writer. Nothing of it is remembered but
// the folders on the way to where it is.
class TreeReader {
public:
    using IsLeftOut = std::function<bool(const struct stat &)>;

    // The archive's path is for messages.
    TreeReader(ZipWriter &writer, QByteArray archive, IsLeftOut isLeftOut);

    // Everything has been given to the writer afterwards. False after a complaint or when
    // interrupted.
    bool read(const platform::ItemPlace &place, const QByteArray &path, bool keepParent);

private:
    struct Level {
        platform::Descriptor folder;
        std::vector<QByteArray> names; // still to come, the last one first
        QByteArray path;
        QByteArray prefix; // of names in the archive; empty or with a slash at the end
    };
    struct Source {
        int folder;
        const QByteArray &name;
        QByteArray path;
        QByteArray nameInArchive;
    };

    bool readItem(const Source &source);
    bool readFolder(const Source &source, const struct stat &status);
    bool enter(platform::Descriptor folder, const QByteArray &path, const QByteArray &prefix);
    bool readFile(const Source &source);
    bool readContents(int file, const Source &source, off_t size);
    bool readLink(const Source &source, const struct stat &status);
    bool begin(const QByteArray &nameInArchive, const struct stat &status,
               const QByteArray &linkTarget = {});
    static bool failedToRead(const Source &source, int error);

    ZipWriter &m_writer;
    QByteArray m_archive;
    IsLeftOut m_isLeftOut;
    std::vector<char> m_buffer;
    std::vector<Level> m_levels;
};
