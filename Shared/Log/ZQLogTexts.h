// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStringView>

#include <vector>

// Texts on their way to the log, one behind the other in one piece of memory.
class ZQLogTexts {
public:
    void add(QStringView text)
    {
        if (m_units.capacity() == 0) {
            m_units.reserve(fullSize + fullSize / 4);
        }
        m_units.insert(m_units.end(), text.utf16(), text.utf16() + text.size());
        m_ends.push_back(m_units.size());
    }

    std::size_t count() const { return m_ends.size(); }
    bool isFull() const { return m_units.size() >= fullSize; }

    QStringView operator[](std::size_t index) const
    {
        const auto start = index == 0 ? 0 : m_ends[index - 1];
        return {m_units.data() + start, static_cast<qsizetype>(m_ends[index] - start)};
    }

    void clear()
    {
        if (m_units.size() > 2 * fullSize) {
            *this = ZQLogTexts();
        }
        m_units.clear();
        m_ends.clear();
    }

private:
    static constexpr std::size_t fullSize = 32768; // UTF-16 units, some 300 lines

    std::vector<char16_t> m_units;
    std::vector<std::size_t> m_ends;
};
