// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/Console.h"
#include "Shared/Log/ZQLog.h"

#include <QDateTime>

#include <exception>
#include <system_error>
#include <utility>

// From the callers' texts to the lines of the file.
namespace {

// A line that makes a file this long, in bytes, is its last.
constexpr quint64 maxFileSize = 500000;

} // namespace

// The text is trimmed.
void ZQLog::appendTextToLog(const QString &text)
{
    if (text.isEmpty()) {
        return;
    }
    m_bytesInQueue.fetch_add(static_cast<quint64>(text.size()), std::memory_order_relaxed);
    if (m_writeQueue.isCurrentThread()) {
        appendLogOnThread(text); // so that the header stays at the head of its file
    } else {
        m_writeQueue.add(text);
    }
}

void ZQLog::appendLogOnThread(const QString &text)
{
    if (loggingDisabled()) {
        return; // with the text still counted in bytesInQueue: kept on purpose
    }
    guarded([&] {
        if (const auto file = openFileHandle()) {
            const auto date = platform::description(QDateTime::currentDateTimeUtc());
            const auto line = (date + QStringLiteral(" - ") + text + u'\n').toUtf8();
            const auto outcome =
                file->append(line.constData(), static_cast<std::size_t>(line.size()));
            if (outcome.error != 0) {
                file->removeTail(outcome.written);
                throw std::system_error(outcome.error, std::generic_category());
            }
            m_bytesWritten.fetch_add(outcome.written, std::memory_order_relaxed);
            if (bytesWritten() >= maxFileSize) {
                createNewLog(appName());
                appendLog(QStringLiteral("Log truncated at 500KB"));
            }
        } else if (!loggingDisabled()) {
            platform::printLine(platform::format(
                QStringLiteral("Unable to log the following information: %s"), text));
            platform::printLine(QStringLiteral("Unable to open log for output"));
        }
        m_bytesInQueue.fetch_sub(static_cast<quint64>(text.size()), std::memory_order_relaxed);
    });
}

// Opens the current file where there is no file handle. Null where that fails.
ZQLog::FileHandle ZQLog::openFileHandle()
{
    if (auto file = fileHandle()) {
        return file;
    }
    // Not while another thread is between the old file and the new one.
    const std::unique_lock noNewLog(m_newLogs);
    auto file = fileHandle();
    if (file == nullptr) {
        file = platform::AppendFile::open(currentFile());
        setFileHandle(file);
    }
    return file;
}

ZQLog::FileHandle ZQLog::fileHandle() const
{
    const std::lock_guard lock(m_mutex);
    return m_fileHandle;
}

void ZQLog::setFileHandle(FileHandle file)
{
    const std::lock_guard lock(m_mutex);
    m_fileHandle = std::move(file);
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
