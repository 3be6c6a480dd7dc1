// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QStringList>

#include <cstddef>
#include <memory>
#include <vector>

namespace platform {

// As many entries of an open folder as the system gives at once, in the order of the file system,
// "." and ".." left out.
class EntryBatch {
public:
    EntryBatch();

    // Reads the next ones. The folder must be open for reading. False at the end, and where reading
    // fails.
    bool read(int folder);
    // errno of what ended the reading, 0 for the end.
    int error() const { return m_error; }
    // Whether there are so many that there will be more.
    bool isFull() const;

    // False behind the last one.
    bool next();
    // Valid until next().
    const char *name() const { return m_name; }
    // DT_DIR and its like of dirent.h; DT_UNKNOWN where the file system does not tell.
    unsigned char type() const { return m_type; }

private:
    int m_error = 0;
    // Not a vector, which would fill it with zeros for every folder.
    std::unique_ptr<std::byte[]> m_buffer; // NOLINT(modernize-avoid-c-arrays)
    std::size_t m_size = 0;
    std::size_t m_at = 0;
    const char *m_name = nullptr;
    unsigned char m_type = 0;
};

// All entries of an open folder.
class FolderEntries {
public:
    // The folder must stay open.
    explicit FolderEntries(int folder) : m_folder(folder) {}

    // As EntryBatch, whose ends do not show.
    bool next();
    const char *name() const { return m_batch.name(); }
    unsigned char type() const { return m_batch.type(); }
    int error() const { return m_batch.error(); }

private:
    int m_folder;
    EntryBatch m_batch;
};

// The names in a folder, sorted by their bytes so that the order is the same every time. Empty
// where the folder is or cannot be read.
QStringList namesInFolder(const QString &path);

// The names in an open folder, sorted by their bytes. 0, else the reason (errno).
int readNames(int folder, std::vector<QByteArray> &names);

} // namespace platform
