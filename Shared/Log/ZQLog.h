// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Files/AppendFile.h"
#include "Platform/Core/Notifications/NotificationCenter.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Platform/Core/Threads/SerialQueue.h"
#include "Shared/Log/ZQLogLines.h"
#include "Shared/Log/ZQLogTexts.h"

#include <QStringList>

#include <atomic>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <shared_mutex>

// The process-wide log: time-stamped lines in "<appName>.1.log" in the user's
// "Library/Logs/Corvane" (for root in the one of "/Library"), with four older generations beside
// it. Callers only format and queue; a thread of the log's own writes. Nothing here reports failure
// or raises: what goes wrong is printed to standard output. Any thread.
class ZQLog {
public:
    // The one instance, made at the first use. It stays to the very end of the process.
    static ZQLog &sharedController();

    /// createNewLog:
    /// Renames the generations and begins a new file with a header, on the calling thread; calls do
    /// not exclude each other. The name is used only where the process has no executable to name
    /// the files after: support looks for a log under the program's name.
    static void createNewLog(const QString &applicationName = QString());

    /// appendLog:
    /// Formats as platform::format() and queues an entry; a null format does nothing. Off the main
    /// thread returns when the text is written if that has 1 to 99 UTF-16 units and the queue with
    /// it no more than 99.
    template <typename... Arguments>
    static void appendLog(const QString &format, const Arguments &...arguments)
    {
        append(Wait::ForShortText, format, {platform::FormatArgument(arguments)...});
    }

    /// fastAppendLog:
    /// The same without ever waiting.
    template <typename... Arguments>
    static void fastAppendLog(const QString &format, const Arguments &...arguments)
    {
        append(Wait::Never, format, {platform::FormatArgument(arguments)...});
    }

    /// appendLogAndPrint:
    /// Logs the text and prints it to standard output. A "%" in the text is interpreted a second
    /// time for the log, as callers in the maker's other programs expect.
    template <typename... Arguments>
    static void appendLogAndPrint(const QString &format, const Arguments &...arguments)
    {
        appendAndPrint(format, {platform::FormatArgument(arguments)...});
    }

    // Returns when every entry queued so far is written or lost. On the write queue at once.
    static void finishWriting();

    // Paths of the generations that exist, newest first; for root, too, in the user's folder.
    static QStringList availableLogs();
    /// willTerminate:
    /// Writes what is queued and closes the log for good; 20 or more pending entries are abandoned.
    static void willTerminate(const platform::Notification &notification);

    // Base name of the files; where none is set, the executable's name without its extension.
    QString appName() const;
    void setAppName(const QString &name);
    // Bytes that this process has written to the current file since createNewLog().
    quint64 bytesWritten() const { return m_bytesWritten.load(std::memory_order_relaxed); }

    // UTF-16 units queued and not yet written: approximate. Never falls by texts that came while
    // logging was disabled or could not be written: kept on purpose for the maker's other programs.
    quint64 bytesInQueue() const { return m_bytesInQueue.load(std::memory_order_relaxed); }

    // Set by createNewLog() when the global preferences say so; never reset.
    bool loggingDisabled() const { return m_loggingDisabled.load(std::memory_order_relaxed); }

    ZQLog(const ZQLog &) = delete;
    ZQLog &operator=(const ZQLog &) = delete;
    ~ZQLog() = delete;

private:
    using FileHandle = std::shared_ptr<platform::AppendFile>;
    enum class Wait { Never, ForShortText };
    struct Forking;

    ZQLog();

    static void append(Wait wait, const QString &format,
                       std::initializer_list<platform::FormatArgument> arguments);
    static void appendAndPrint(const QString &format,
                               std::initializer_list<platform::FormatArgument> arguments);
    void appendTextToLog(QStringView text);
    void close();

    // Does some work; what that raises is printed.
    template <typename Work>
    void guarded(Work work) const noexcept
    {
        try {
            work();
        } catch (const std::exception &exception) {
            reportException(exception.what());
        }
    }
    void reportException(const char *reason) const noexcept;
    // On the write queue.
    void appendAll(const ZQLogTexts &texts);
    void appendLogOnThread(QStringView text);
    bool useCurrentFile();
    bool takeFileHandle();
    void writeLines();
    void leftQueue(qsizetype characters);

    bool startNewLog(const QString &applicationName);
    bool rotate(const QString &folder) const;
    QString generation(const QString &folder, long number) const;
    QString currentFile() const;
    void setFileHandle(FileHandle file);

    platform::NotificationCenter::Observer m_terminationObserver;
    std::atomic<quint64> m_bytesWritten = 0;
    std::atomic<bool> m_loggingDisabled = false;
    std::atomic<unsigned> m_fileHandleChanges = 0;

    std::shared_mutex m_newLogs; // shared by calls that begin a new log
    mutable std::mutex m_mutex;  // name and file handle
    QString m_appName;
    FileHandle m_fileHandle;

    // The write queue's own.
    ZQLogLines m_lines;
    unsigned m_linesFileHandleChanges = 0;
    std::deque<QString> m_nextInLine; // queued by the queue itself

    std::atomic<quint64> m_bytesInQueue = 0;
    platform::SerialQueue<ZQLogTexts> m_writeQueue;
};

// For exceptions that nobody catches; installed with the log.
void uncaughtExceptionHandler(const platform::Exception &exception);
