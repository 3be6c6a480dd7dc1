// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Notifications/Notification.h"
#include "Platform/Core/Processes/ChildProcess.h"

#include <QVariant>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

// Runs external commands. A command of the system ("/bin/launchctl") is looked for elsewhere too,
// see platform::systemCommand(); messages show the path that was asked for. "Executable" means a
// file with execute permission. Any thread; on the main thread the waits of the run and
// termination-code variants dispatch events, the reading of the data and text variants does not.
class ZQTaskEx : public std::enable_shared_from_this<ZQTaskEx> {
public:
    using Environment = platform::ChildProcess::Environment;
    // Receives the command as soon as there is one, before the launch.
    using Task = platform::ChildProcessReference;
    // Whole seconds count: 2.9 is 2 and 0.5 is 0. Then the command is terminated, as soon as the
    // main thread can do it.
    using Timeout = std::chrono::duration<double>;
    // Data is empty at the end of the output. On a thread of its own; object as it was given.
    using Callback =
        std::function<void(const QByteArray &data, ZQTaskEx &runner, const QVariant &object)>;
    enum class Encoding { ASCII = 1, UTF8 = 4, Latin1 = 5 }; // NSStringEncoding's values
    enum class LogOutput { No, Yes };

    // The threads of an instance keep it alive.
    static std::shared_ptr<ZQTaskEx> create();

    ZQTaskEx(const ZQTaskEx &) = delete;
    ZQTaskEx &operator=(const ZQTaskEx &) = delete;
    ~ZQTaskEx() = default;

    /// runTask:arguments:
    /// runTask:arguments:task:
    /// Waits for the end. True when launched and finished, whatever the exit status. The output is
    /// thrown away, but where there is a complaint to fill: it gets the first 4 KiB of the standard
    /// error.
    static bool runTask(const QString &path, const QStringList &arguments, Task *task = nullptr);
    static bool runTask(const QString &path, const QStringList &arguments, Task *task,
                        QByteArray *complaint);
    /// runTask:arguments:timeout:
    static void runTask(const QString &path, const QStringList &arguments, Timeout timeout);
    static void runTask(const QString &path, const QStringList &arguments, Timeout timeout,
                        QByteArray *complaint);
    /// runTask:arguments:timeout: (instance)
    void runTaskInInstance(const QString &path, const QStringList &arguments, Timeout timeout);

    /// runTaskAndReturn:arguments:
    /// Launches and does not wait.
    static void runTaskAndReturn(const QString &path, const QStringList &arguments);

    /// stringFromTask:arguments:
    /// stringFromTask:arguments:task:
    /// stringFromTask:arguments:encoding:task:
    /// The data variant's result as text, ASCII unless told otherwise; empty, not null, when there
    /// is none, and null when it cannot be decoded.
    static QString stringFromTask(const QString &path, const QStringList &arguments,
                                  Task *task = nullptr);
    static QString stringFromTask(const QString &path, const QStringList &arguments,
                                  Encoding encoding, Task *task);
    /// stringFromTask:arguments:timeout:
    /// stringFromTask:arguments:encoding:timeout:
    static QString stringFromTask(const QString &path, const QStringList &arguments,
                                  Timeout timeout);
    static QString stringFromTask(const QString &path, const QStringList &arguments,
                                  Encoding encoding, Timeout timeout);

    /// dataFromTask:arguments:task:
    /// dataFromTask:arguments:task:environment:
    /// dataFromTask:arguments:task:environment:logOutput:
    /// The standard output; where that is empty or (LogOutput::No) not captured, the standard
    /// error; null when the command could not be run. Standard output is read to its end before
    /// standard error, so a command that fills the latter's pipe first blocks; its standard input
    /// is a pipe that nobody writes to. Returns at the end of both, not of the command. All kept on
    /// purpose for the maker's other programs.
    static QByteArray dataFromTask(const QString &path, const QStringList &arguments, Task *task,
                                   const std::optional<Environment> &environment = std::nullopt,
                                   LogOutput logOutput = LogOutput::Yes);
    /// dataFromTask:arguments:timeout:
    static QByteArray dataFromTask(const QString &path, const QStringList &arguments,
                                   Timeout timeout);
    /// dataFromTask:arguments:timeout: (instance)
    QByteArray dataFromTaskInInstance(const QString &path, const QStringList &arguments,
                                      Timeout timeout);

    /// terminationCodeFromTask:arguments:
    /// terminationCodeFromTask:arguments:task:
    /// The exit status, or the number of the signal that ended the command; -1 when the path is not
    /// executable. Throws platform::Exception when the command cannot be launched.
    static qint64 terminationCodeFromTask(const QString &path, const QStringList &arguments,
                                          Task *task = nullptr);
    /// terminationCodeFromTask:arguments:timeout:
    static qint64 terminationCodeFromTask(const QString &path, const QStringList &arguments,
                                          Timeout timeout);
    /// terminationCodeFromTask:arguments:timeout: (instance)
    qint64 terminationCodeFromTaskInInstance(const QString &path, const QStringList &arguments,
                                             Timeout timeout);

    /// asyncDataFromTask:arguments:delegate:selector:object:
    /// asyncDataFromTask:arguments:delegate:selector:object:environment:
    /// Returns at once; the callback gets each piece of the standard output and at last empty data,
    /// on a thread that keeps this object alive. One command at a time: an earlier one's callback
    /// is forgotten. Launches whatever is executable, packages too: kept on purpose for the maker's
    /// other programs.
    void asyncDataFromTask(const QString &path, const QStringList &arguments, Callback callback,
                           const QVariant &object = {},
                           const std::optional<Environment> &environment = std::nullopt);

    /// terminateAsyncTask
    /// Forgets the callback and the object and terminates the command. A call of the callback that
    /// has begun still ends.
    void terminateAsyncTask();

    // The command that this instance runs; null where it runs none.
    std::shared_ptr<platform::ChildProcess> theTask() const { return m_task.get(); }

    /// launchAsyncTask
    /// What the reader's thread does.
    void launchAsyncTask();

private:
    struct AsyncRun;

    ZQTaskEx() = default;

    template <typename Work>
    auto withTimeout(Timeout timeout, Work work);
    void setupTimeout(std::chrono::seconds time);
    void timeout();

    void readAsyncTask(const std::shared_ptr<AsyncRun> &run);
    void asyncTaskReturnData(const platform::Notification &notification,
                             const std::shared_ptr<AsyncRun> &run);
    static void forget(const std::shared_ptr<AsyncRun> &run);
    void endAsyncRun(const std::shared_ptr<AsyncRun> &run);

    Task m_task;
    std::mutex m_mutex;
    std::shared_ptr<AsyncRun> m_run; // the asynchronous command
};
