// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <vector>

// Texts on their way to the log, one behind the other in one piece of memory: the callers encode
// them, so that the thread that writes keeps up with any number of callers.
class ZQLogTexts {
public:
    struct Text {
        QByteArray utf8;
        quint64 characters = 0; // UTF-16 units
    };

    void add(const Text &text)
    {
        m_bytes += text.utf8;
        m_characters += text.characters;
        m_ends.push_back({m_bytes.size(), text.characters});
    }

    std::size_t count() const { return m_ends.size(); }
    quint64 characters() const { return m_characters; }
    bool isFull() const { return m_bytes.size() >= 32768; }

    // Refers to the memory of all.
    Text operator[](std::size_t index) const
    {
        const auto start = index == 0 ? 0 : m_ends[index - 1].bytes;
        const auto size = static_cast<int>(m_ends[index].bytes - start);
        return {QByteArray::fromRawData(m_bytes.constData() + start, size),
                m_ends[index].characters};
    }

private:
    struct End {
        qsizetype bytes;
        quint64 characters; // of the text alone
    };

    QByteArray m_bytes;
    std::vector<End> m_ends;
    quint64 m_characters = 0;
};
