// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/ExecutableFile.h"
#include "Platform/Core/Processes/PipeReader.h"
#include "Platform/Core/Threads/BackgroundThread.h"
#include "Shared/Log/ZQException.h"
#include "Shared/Log/ZQLog.h"
#include "Shared/Tasks/ZQTaskCommand.h"
#include "Shared/Tasks/ZQTaskEx.h"

using Stream = platform::ChildProcess::Stream;

// One asynchronous command. What its reader does late touches no other command's run.
struct ZQTaskEx::AsyncRun {
    std::shared_ptr<platform::ChildProcess> process;
    std::mutex mutex;
    Callback callback;
    QVariant object;
    std::optional<platform::PipeReader> output;
    bool isTaken = false; // by a reader
    bool hasEnded = false;
};

namespace {

const char *const launchMethod = "-[ZQTaskEx launchAsyncTask]";

QString dataItem()
{
    return QStringLiteral("NSFileHandleNotificationDataItem");
}

} // namespace

void ZQTaskEx::asyncDataFromTask(const QString &path, const QStringList &arguments,
                                 Callback callback, const QVariant &object,
                                 const std::optional<Environment> &environment)
{
    auto run = std::make_shared<AsyncRun>();
    run->callback = std::move(callback);
    run->object = object;
    run->process = taskProcess(path, arguments);
    run->process->setStandardOutput(Stream::Pipe);
    run->process->setStandardError(Stream::NullDevice);
    if (environment.has_value()) {
        run->process->setEnvironment(*environment);
    }
    std::shared_ptr<AsyncRun> previous;
    {
        const std::lock_guard lock(m_mutex);
        previous = std::exchange(m_run, run);
        m_task.set(run->process);
    }
    forget(previous);
    if (!platform::startBackgroundThread(
            [self = shared_from_this()] { self->launchAsyncTask(); })) {
        ZQLog::appendLog(QStringLiteral("Unable to launch async task - no thread to read it"));
        endAsyncRun(run);
    }
}

void ZQTaskEx::launchAsyncTask()
{
    std::shared_ptr<AsyncRun> run;
    {
        const std::lock_guard lock(m_mutex);
        run = m_run;
    }
    if (run == nullptr) {
        ZQLog::appendLogAndPrint(QStringLiteral("Unable to launch async task - no task set"));
        return;
    }
    if (!platform::isExecutable(run->process->executable())) {
        ZQLog::appendLog(QStringLiteral("Unable to launch async task - task does not exist or is "
                                        "not executable"));
        return;
    }
    try {
        readAsyncTask(run);
    } catch (const platform::Exception &exception) {
        ZQException::logException(exception, launchMethod);
    } catch (const std::exception &exception) {
        ZQException::logException(platform::Exception(QStringLiteral("std::exception"),
                                                      QString::fromUtf8(exception.what())),
                                  launchMethod);
    }
}

void ZQTaskEx::readAsyncTask(const std::shared_ptr<AsyncRun> &run)
{
    {
        // Under the lock: a run that was ended is not launched, one that is launched can be ended.
        const std::lock_guard lock(run->mutex);
        if (run->hasEnded || std::exchange(run->isTaken, true)) {
            return;
        }
        run->process->launch();
        run->process->reapInBackground();
        run->output.emplace(std::move(run->process->standardOutput()));
    }
    QByteArray data;
    do {
        data = run->output->readAvailable();
        asyncTaskReturnData(
            {QStringLiteral("ZQAsyncTaskDataNotification"), {}, {{dataItem(), data}}}, run);
    } while (!data.isEmpty());
}

void ZQTaskEx::asyncTaskReturnData(const platform::Notification &notification,
                                   const std::shared_ptr<AsyncRun> &run)
{
    const auto data = notification.userInfo.value(dataItem()).toByteArray();
    Callback callback;
    QVariant object;
    {
        const std::lock_guard lock(run->mutex);
        callback = run->callback;
        object = run->object;
    }
    if (callback) {
        callback(data, *this, object);
    }
    if (data.isEmpty()) {
        endAsyncRun(run);
    }
}

void ZQTaskEx::forget(const std::shared_ptr<AsyncRun> &run)
{
    if (run == nullptr) {
        return;
    }
    // They go after the lock: what they hold may call back.
    Callback callback;
    QVariant object;
    const std::lock_guard lock(run->mutex);
    callback.swap(run->callback);
    object.swap(run->object);
}

void ZQTaskEx::endAsyncRun(const std::shared_ptr<AsyncRun> &run)
{
    forget(run);
    {
        const std::lock_guard lock(run->mutex);
        run->hasEnded = true;
        if (run->output.has_value()) {
            run->output->close();
        }
        if (run->process->isRunning()) {
            run->process->terminate();
        }
    }
    const std::lock_guard lock(m_mutex);
    if (m_run == run) {
        m_run.reset();
        m_task.clear();
    }
}

void ZQTaskEx::terminateAsyncTask()
{
    std::shared_ptr<AsyncRun> run;
    {
        const std::lock_guard lock(m_mutex);
        run = m_run;
    }
    if (run != nullptr) {
        endAsyncRun(run);
    } else if (const auto task = m_task.get(); task != nullptr) {
        m_task.clear();
        if (task->isRunning()) {
            task->terminate();
        }
    }
}
