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
    const ZQLogTexts::Text entry{text.toUtf8(), static_cast<quint64>(text.size())};
    m_bytesInQueue.fetch_add(entry.characters, std::memory_order_relaxed);
    if (m_writeQueue.isCurrentThread()) {
        appendLogOnThread(entry); // so that the header stays at the head of its file
    } else {
        m_writeQueue.add(entry);
    }
}

void ZQLog::appendAll(const ZQLogTexts &texts)
{
    auto areWritten = false;
    guarded([&] { areWritten = appendTogether(texts); });
    for (std::size_t index = 0; index < texts.count() && !areWritten; ++index) {
        if (m_writeQueue.isStopped()) {
            return;
        }
        appendLogOnThread(texts[index]);
    }
}

// Saves system calls where the outcome is as if each text were written by itself. False, with
// nothing written, where it might not be.
bool ZQLog::appendTogether(const ZQLogTexts &texts)
{
    const auto file = fileHandle();
    if (file == nullptr || loggingDisabled()) {
        return false;
    }
    QByteArray lines;
    for (std::size_t index = 0; index < texts.count(); ++index) {
        lines += date();
        lines += texts[index].utf8;
        lines += '\n';
    }
    const auto size = static_cast<std::size_t>(lines.size());
    if (bytesWritten() + size >= maxFileSize) {
        return false;
    }
    if (const auto outcome = file->append(lines.constData(), size); outcome.error != 0) {
        file->removeTail(outcome.written);
        return false;
    }
    m_bytesWritten.fetch_add(size, std::memory_order_relaxed);
    m_bytesInQueue.fetch_sub(texts.characters(), std::memory_order_relaxed);
    return true;
}

void ZQLog::appendLogOnThread(const ZQLogTexts::Text &text)
{
    if (loggingDisabled()) {
        return; // the text stays counted in bytesInQueue; other programs of the maker rely on it
    }
    guarded([&] {
        if (const auto file = openFileHandle()) {
            const QByteArray bytes = date() + text.utf8 + '\n';
            const auto outcome =
                file->append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
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
                QStringLiteral("Unable to log the following information: %s"), text.utf8));
            platform::printLine(QStringLiteral("Unable to open log for output"));
        }
        m_bytesInQueue.fetch_sub(text.characters, std::memory_order_relaxed);
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

// What a line begins with now.
const QByteArray &ZQLog::date()
{
    if (const auto now = std::time(nullptr); now != m_second) {
        m_second = now;
        m_date = platform::description(QDateTime::currentDateTimeUtc()).toLatin1() + " - ";
    }
    return m_date;
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
