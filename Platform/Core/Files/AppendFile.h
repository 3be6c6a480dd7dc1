// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <cstddef>
#include <memory>

namespace platform {

// A regular file open for adding at its end, wherever that is at the time.
class AppendFile {
public:
    // Opens an existing file. Null where there is none, where it may not be written, and for all
    // but a regular file: links are not followed and a pipe without a reader does not block.
    static std::shared_ptr<AppendFile> open(const QString &path);

    explicit AppendFile(int descriptor) : m_descriptor(descriptor) {}
    ~AppendFile();
    AppendFile(const AppendFile &) = delete;
    AppendFile &operator=(const AppendFile &) = delete;

    struct Outcome {
        std::size_t written; // bytes
        int error;           // errno where that is less than was to be written
    };
    Outcome append(const char *bytes, std::size_t size) const;

    // Takes away what append() has just written of something it could not write whole. Does nothing
    // when others have written since.
    void removeTail(std::size_t size) const;

private:
    int m_descriptor;
};

} // namespace platform
