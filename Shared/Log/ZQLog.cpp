// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Log/ZQLog.h"

#include "Platform/Core/Bundles/Bundle.h"
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Threads/MainThread.h"

#include <pthread.h>

#include <cstdlib>
#include <new>

namespace {

// A text this long, with this much in the queue, is not worth a wait.
constexpr quint64 longText = 100;

// So many pending entries are abandoned at the end rather than delaying it.
constexpr std::size_t manyEntries = 20;

// At the end an entry that is being written gets this long.
constexpr auto maxWaitAtExit = std::chrono::milliseconds(200);

} // namespace

// A forked child gets the log as it is between two entries.
struct ZQLog::Forking {
    static void prepare()
    {
        sharedController().m_writeQueue.prepareForFork();
        sharedController().m_mutex.lock();
    }

    static void inParent()
    {
        sharedController().m_mutex.unlock();
        sharedController().m_writeQueue.parentHasForked();
    }

    static void inChild()
    {
        auto &log = sharedController();
        // Threads that were beginning a new log hold it, who do not exist here.
        ::new (&log.m_newLogs) std::shared_mutex;
        log.m_bytesInQueue.store(0, std::memory_order_relaxed); // those are the parent's
        log.m_mutex.unlock();
        log.m_writeQueue.childWasForked();
    }
};

ZQLog::ZQLog()
    : m_terminationObserver(platform::NotificationCenter::defaultCenter().addObserver(
          platform::applicationWillTerminateNotification, &ZQLog::willTerminate)),
      m_writeQueue("log", [this](const ZQLogTexts &texts) { appendAll(texts); })
{
    platform::setUncaughtExceptionHandler(uncaughtExceptionHandler);
}

ZQLog &ZQLog::sharedController()
{
    // Closed at exit but never destroyed: other threads may log to the very end.
    static auto *const controller = [] {
        auto *const log = new ZQLog;
        ::pthread_atfork(Forking::prepare, Forking::inParent, Forking::inChild);
        std::atexit([] { sharedController().close(); });
        return log;
    }();
    return *controller;
}

void ZQLog::append(Wait wait, const QString &format,
                   std::initializer_list<platform::FormatArgument> arguments)
{
    if (format.isNull()) {
        return;
    }
    auto &log = sharedController();
    log.guarded([&] {
        const auto text = platform::formatText(format, arguments);
        const auto length = static_cast<quint64>(text.size());
        log.appendTextToLog(text);
        if (wait == Wait::ForShortText && length > 0 && length < longText &&
            log.bytesInQueue() < longText && !platform::isMainThread()) {
            finishWriting();
        }
    });
}

void ZQLog::appendAndPrint(const QString &format,
                           std::initializer_list<platform::FormatArgument> arguments)
{
    if (format.isNull()) {
        return;
    }
    sharedController().guarded([&] {
        const auto text = platform::formatText(format, arguments).trimmed();
        appendLog(text);
        platform::printLine(text);
    });
}

void ZQLog::finishWriting()
{
    sharedController().m_writeQueue.waitUntilIdle();
}

void ZQLog::willTerminate(const platform::Notification & /*notification*/)
{
    auto &log = sharedController();
    platform::NotificationCenter::defaultCenter().removeObserver(log.m_terminationObserver);
    log.close();
}

void ZQLog::close()
{
    if (m_writeQueue.pending() < manyEntries) {
        m_writeQueue.waitUntilIdle();
    }
    setAppName(QString());
    if (m_writeQueue.stop(maxWaitAtExit)) {
        m_lines.setFile(nullptr);
    }
    setFileHandle(nullptr);
}

QString ZQLog::appName() const
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_appName.isNull()) {
            return m_appName;
        }
    }
    const auto path = platform::Bundle::main().executablePath();
    if (path.isNull()) {
        return {};
    }
    const auto name = path.mid(path.lastIndexOf(u'/') + 1);
    const auto extension = name.lastIndexOf(u'.');
    return extension > 0 ? name.left(extension) : name;
}

void ZQLog::setAppName(const QString &name)
{
    const std::lock_guard lock(m_mutex);
    m_appName = name;
}

void uncaughtExceptionHandler(const platform::Exception &exception)
{
    ZQLog::appendLogAndPrint(exception.reason());
    ZQLog::finishWriting();
}
