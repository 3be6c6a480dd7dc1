// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/ZQLogBatch.h"

#include "Platform/TextFormat.h"

#include <QDateTime>

#include <algorithm>
#include <cstring>
#include <system_error>
#include <utility>

namespace {

// More than a batch of usual lines needs is given back after an unusual one.
constexpr qsizetype usualCapacity = 1 << 20;

} // namespace

void ZQLogBatch::add(QStringView text)
{
    addDate();
    addUtf8(text);
    *grow(1) = '\n';
    m_lines.push_back({m_bytes.size(), text.size()});
}

void ZQLogBatch::addDate()
{
    const auto now = std::time(nullptr);
    if (now != m_second) {
        m_second = now;
        m_date = platform::description(QDateTime::fromSecsSinceEpoch(now)).toLatin1() + " - ";
    }
    m_bytes += m_date;
}

void ZQLogBatch::addUtf8(QStringView text)
{
    auto *out = grow(text.size());
    ushort all = 0;
    for (const QChar unit : text) {
        all |= unit.unicode();
        *out++ = static_cast<char>(unit.unicode());
    }
    if (all > 0x7F) {
        m_bytes.chop(static_cast<int>(text.size()));
        m_bytes += text.toUtf8();
    }
}

// Room for so many bytes at the end.
char *ZQLogBatch::grow(qsizetype bytes)
{
    const auto size = m_bytes.size();
    if (size + bytes > m_bytes.capacity()) {
        m_bytes.reserve(static_cast<int>(std::max(2 * size, size + static_cast<int>(bytes))));
    }
    m_bytes.resize(size + static_cast<int>(bytes));
    return m_bytes.data() + size;
}

ZQLogBatch::Written ZQLogBatch::write(const Failed &failed)
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
    m_bytes.capacity() > usualCapacity ? m_bytes.clear() : m_bytes.resize(0);
    return all;
}

// Goes on where a write of all lines ended with an error.
ZQLogBatch::Written ZQLogBatch::writeOneByOne(std::size_t written, int error, const Failed &failed)
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
