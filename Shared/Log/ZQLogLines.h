// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Files/AppendFile.h"

#include <QByteArray>
#include <QStringView>

#include <ctime>
#include <functional>
#include <memory>
#include <vector>

// Lines on their way to one log file. They are written together, with the same outcome as if each
// had been written by itself.
class ZQLogLines {
public:
    ZQLogLines();

    // Where the lines go; none: nothing can be added. Not to be changed while there are lines.
    void setFile(std::shared_ptr<platform::AppendFile> file) { m_file = std::move(file); }
    bool hasFile() const { return m_file != nullptr; }

    // Adds the line "<date> - <text>" in UTF-8. A surrogate without its other half becomes a
    // question mark.
    void add(QStringView text);

    // Bytes of the lines.
    std::size_t size() const
    {
        return m_lines.empty() ? 0 : static_cast<std::size_t>(m_lines.back().end);
    }

    struct Written {
        quint64 bytes = 0;
        qsizetype characters = 0; // UTF-16 units of the texts
    };
    // Writes and forgets the lines. A line that cannot be written whole is left out, and failed is
    // called with the system's words.
    using Failed = std::function<void(const char *reason)>;
    Written write(const Failed &failed);

private:
    struct Line {
        qsizetype end; // in m_bytes
        qsizetype characters;
    };

    void addDate();
    void addUtf8(QStringView text);
    char *grow(qsizetype bytes);
    Written writeOneByOne(std::size_t written, int error, const Failed &failed);

    std::shared_ptr<platform::AppendFile> m_file;
    QByteArray m_bytes;
    std::vector<Line> m_lines;
    std::time_t m_second = -1;
    QByteArray m_date; // of that second, with the dash behind it
};
