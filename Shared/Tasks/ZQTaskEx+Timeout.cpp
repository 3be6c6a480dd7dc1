// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Threads/BackgroundThread.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Shared/Log/ZQLog.h"
#include "Shared/Tasks/ZQTaskEx.h"

namespace {

constexpr std::chrono::seconds maxTime = std::chrono::hours(24 * 365);

// Cut to whole seconds.
std::chrono::seconds wholeSeconds(ZQTaskEx::Timeout time)
{
    if (!(time.count() > 0)) {
        return std::chrono::seconds(0);
    }
    return time < maxTime ? std::chrono::duration_cast<std::chrono::seconds>(time) : maxTime;
}

} // namespace

template <typename Work>
auto ZQTaskEx::withTimeout(Timeout time, Work work)
{
    if (!platform::startBackgroundThread([self = shared_from_this(), seconds = wholeSeconds(time)] {
            self->setupTimeout(seconds);
        })) {
        platform::consoleLog(QStringLiteral("No time-out for a task: no thread to be had"));
    }
    m_task.clear();
    auto result = work(&m_task);
    m_task.clear();
    return result;
}

// On the timer's thread, which is still there when the command has long ended.
void ZQTaskEx::setupTimeout(std::chrono::seconds time)
{
    std::this_thread::sleep_for(time);
    platform::performOnMainThreadAndWait([this] { timeout(); });
}

// No task, or none that runs, is how a run that is over shows.
void ZQTaskEx::timeout()
{
    const auto task = m_task.get();
    if (task == nullptr || !task->isRunning()) {
        return;
    }
    platform::consoleLine(QStringLiteral("Task timed out. Terminating..."));
    ZQLog::appendLog(QStringLiteral("Task %@ timed out. Terminating..."), task->launchPath());
    task->terminate();
}

void ZQTaskEx::runTaskInInstance(const QString &path, const QStringList &arguments, Timeout timeout)
{
    withTimeout(timeout, [&](Task *task) { return runTask(path, arguments, task); });
}

QByteArray ZQTaskEx::dataFromTaskInInstance(const QString &path, const QStringList &arguments,
                                            Timeout timeout)
{
    return withTimeout(timeout, [&](Task *task) { return dataFromTask(path, arguments, task); });
}

qint64 ZQTaskEx::terminationCodeFromTaskInInstance(const QString &path,
                                                   const QStringList &arguments, Timeout timeout)
{
    return withTimeout(timeout,
                       [&](Task *task) { return terminationCodeFromTask(path, arguments, task); });
}

void ZQTaskEx::runTask(const QString &path, const QStringList &arguments, Timeout timeout)
{
    create()->runTaskInInstance(path, arguments, timeout);
}

void ZQTaskEx::runTask(const QString &path, const QStringList &arguments, Timeout timeout,
                       QByteArray *complaint)
{
    create()->withTimeout(timeout,
                          [&](Task *task) { return runTask(path, arguments, task, complaint); });
}

QByteArray ZQTaskEx::dataFromTask(const QString &path, const QStringList &arguments,
                                  Timeout timeout)
{
    return create()->dataFromTaskInInstance(path, arguments, timeout);
}

qint64 ZQTaskEx::terminationCodeFromTask(const QString &path, const QStringList &arguments,
                                         Timeout timeout)
{
    return create()->terminationCodeFromTaskInInstance(path, arguments, timeout);
}
