// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/Console.h"
#include "Shared/Log/ZQLog.h"

#include <exception>

// From the callers' texts to the lines of the file.
namespace {

// A line that makes a file this long, in bytes, is its last.
constexpr quint64 maxFileSize = 500000;

// So many bytes are handed over together.
constexpr std::size_t muchAtOnce = 262144;

} // namespace

void ZQLog::appendTextToLog(QStringView text)
{
    text = text.trimmed();
    if (text.isEmpty()) {
        return;
    }
    m_bytesInQueue.fetch_add(static_cast<quint64>(text.size()), std::memory_order_relaxed);
    if (m_writeQueue.isCurrentThread()) {
        // Next in line, so that the header stays at the head of its file.
        m_nextInLine.push_back(text.toString());
    } else {
        m_writeQueue.add(text);
    }
}

void ZQLog::appendAll(const ZQLogTexts &texts)
{
    for (std::size_t index = 0; index < texts.count() && !m_writeQueue.isStopped(); ++index) {
        appendLogOnThread(texts[index]);
        for (; !m_nextInLine.empty(); m_nextInLine.pop_front()) {
            appendLogOnThread(m_nextInLine.front());
        }
    }
    guarded([this] { writeLines(); });
}

void ZQLog::appendLogOnThread(QStringView text)
{
    if (loggingDisabled()) {
        return; // with the text still counted in bytesInQueue, for the maker's other programs
    }
    guarded([&] {
        if (!useCurrentFile()) {
            if (!loggingDisabled()) {
                platform::printLine(
                    platform::format(QStringLiteral("Unable to log the following information: %s"),
                                     text.toString()));
                platform::printLine(QStringLiteral("Unable to open log for output"));
            }
            leftQueue(text.size());
            return;
        }
        m_lines.add(text);
        if (bytesWritten() + m_lines.size() >= maxFileSize || m_lines.size() >= muchAtOnce) {
            writeLines();
        }
        if (bytesWritten() >= maxFileSize) {
            createNewLog(appName());
            appendLog(QStringLiteral("Log truncated at 500KB"));
        }
    });
}

// Has the lines go to the current file. False where that cannot be opened.
bool ZQLog::useCurrentFile()
{
    if (takeFileHandle()) {
        return true;
    }
    // Not while another thread is between the old file and the new one.
    const std::unique_lock noNewLog(m_newLogs);
    if (takeFileHandle()) {
        return true;
    }
    auto file = platform::AppendFile::open(currentFile());
    if (file == nullptr) {
        return false;
    }
    m_lines.setFile(file);
    const std::lock_guard lock(m_mutex);
    // Not if the log has been closed meanwhile.
    if (m_fileHandleChanges.load(std::memory_order_relaxed) == m_linesFileHandleChanges) {
        m_fileHandle = std::move(file);
    }
    return true;
}

// Follows a change of the file handle. False where there is none.
bool ZQLog::takeFileHandle()
{
    if (m_fileHandleChanges.load(std::memory_order_relaxed) != m_linesFileHandleChanges) {
        writeLines();
        const std::lock_guard lock(m_mutex);
        m_linesFileHandleChanges = m_fileHandleChanges.load(std::memory_order_relaxed);
        m_lines.setFile(m_fileHandle);
    }
    return m_lines.hasFile();
}

void ZQLog::writeLines()
{
    const auto written = m_lines.write([this](const char *reason) { reportException(reason); });
    if (m_fileHandleChanges.load(std::memory_order_relaxed) == m_linesFileHandleChanges) {
        m_bytesWritten.fetch_add(written.bytes, std::memory_order_relaxed);
    }
    leftQueue(written.characters);
}

void ZQLog::leftQueue(qsizetype characters)
{
    m_bytesInQueue.fetch_sub(static_cast<quint64>(characters), std::memory_order_relaxed);
}

void ZQLog::setFileHandle(FileHandle file)
{
    const std::lock_guard lock(m_mutex);
    m_fileHandle = std::move(file);
    m_fileHandleChanges.fetch_add(1, std::memory_order_relaxed);
}

void ZQLog::reportException(const char *reason) const noexcept
{
    try {
        if (!loggingDisabled()) {
            platform::printLine(
                platform::format(QStringLiteral("Exception writing to log: %s"), reason));
        }
    } catch (const std::exception &) {
        // Not even memory for the words.
    }
}
