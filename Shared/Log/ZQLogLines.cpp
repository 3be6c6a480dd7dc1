// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Log/ZQLogLines.h"

#include "Platform/Core/Text/TextFormat.h"

#include <QDateTime>

#include <system_error>
#include <utility>

namespace {

// Kept between two writes; what unusual lines need beyond it is given back.
constexpr int usualCapacity = 128 * 1024;

// Copies ASCII; not below 0x80 where the text is more than that. Without aliasing and with a size
// known beforehand the compiler makes vector instructions of it.
inline unsigned narrow(const char16_t *text, qsizetype size, char *__restrict out)
{
    unsigned all = 0;
    for (qsizetype unit = 0; unit < size; ++unit) {
        all |= text[unit];
        out[unit] = static_cast<char>(text[unit]);
    }
    return all;
}

} // namespace

ZQLogLines::ZQLogLines()
{
    m_bytes.reserve(usualCapacity);
}

void ZQLogLines::add(QStringView text)
{
    m_bytes.resize(static_cast<int>(size())); // drops what a line without memory left behind
    addDate();
    addUtf8(text);
    *grow(1) = '\n';
    m_lines.push_back({m_bytes.size(), text.size()});
}

void ZQLogLines::addDate()
{
    const auto now = std::time(nullptr);
    if (now != m_second) {
        m_second = now;
        m_date = platform::description(QDateTime::fromSecsSinceEpoch(now)).toLatin1() + " - ";
    }
    m_bytes += m_date;
}

void ZQLogLines::addUtf8(QStringView text)
{
    constexpr qsizetype block = 16;
    const auto *unit = text.utf16();
    auto *out = grow(text.size());
    auto left = text.size();
    unsigned all = 0;
    for (; left >= block; left -= block, unit += block, out += block) {
        all |= narrow(unit, block, out);
    }
    all |= narrow(unit, left, out);
    if (all >= 0x80) {
        m_bytes.chop(static_cast<int>(text.size()));
        m_bytes += text.toUtf8();
    }
}

// Room for so many bytes at the end.
char *ZQLogLines::grow(qsizetype bytes)
{
    const auto size = m_bytes.size();
    m_bytes.resize(size + static_cast<int>(bytes));
    return m_bytes.data() + size;
}

ZQLogLines::Written ZQLogLines::write(const Failed &failed)
{
    Written all;
    if (m_lines.empty()) {
        return all;
    }
    const auto [written, error] = m_file->append(m_bytes.constData(), size());
    if (error == 0) {
        all.bytes = written;
        for (const auto &line : m_lines) {
            all.characters += line.characters;
        }
    } else {
        all = writeOneByOne(written, error, failed);
    }
    m_lines.clear();
    m_bytes.resize(0);
    if (m_bytes.capacity() > 2 * usualCapacity) {
        m_bytes = QByteArray();
        m_bytes.reserve(usualCapacity);
    }
    return all;
}

// Goes on where a write of all lines ended with an error.
ZQLogLines::Written ZQLogLines::writeOneByOne(std::size_t written, int error, const Failed &failed)
{
    Written all;
    const char *bytes = m_bytes.constData();
    for (const auto &line : m_lines) {
        const auto *const end = m_bytes.constData() + line.end;
        const auto length = static_cast<std::size_t>(end - bytes);
        platform::AppendFile::Outcome outcome{length, 0};
        if (error == 0) {
            outcome = m_file->append(bytes, length);
        } else if (written >= length) {
            written -= length;
        } else {
            outcome = {written, std::exchange(error, 0)};
        }
        if (outcome.error == 0) {
            all.bytes += length;
            all.characters += line.characters;
        } else {
            m_file->removeTail(outcome.written);
            failed(std::generic_category().message(outcome.error).c_str());
        }
        bytes = end;
    }
    return all;
}
