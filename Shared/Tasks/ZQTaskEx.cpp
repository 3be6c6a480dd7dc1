// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Tasks/ZQTaskEx.h"

#include "Platform/Core/Text/Console.h"
#include "Shared/Log/ZQLog.h"
#include "Shared/Tasks/ZQTaskCommand.h"

#include <unistd.h>

namespace {

QString notExecutable()
{
    return QStringLiteral("Error: %@ is not executable");
}

// Both outputs go to the null device.
std::shared_ptr<platform::ChildProcess> silentProcess(const QString &path,
                                                      const QStringList &arguments)
{
    auto process = taskProcess(path, arguments);
    process->setStandardOutput(platform::ChildProcess::Stream::NullDevice);
    process->setStandardError(platform::ChildProcess::Stream::NullDevice);
    return process;
}

QByteArray beginningOf(const platform::Descriptor &file)
{
    constexpr int maxSize = 4096;
    QByteArray bytes(maxSize, Qt::Uninitialized);
    const auto size = ::pread(file.fd(), bytes.data(), maxSize, 0);
    bytes.truncate(static_cast<int>(qMax<ssize_t>(size, 0)));
    return bytes;
}

void logException(const QString &path, const std::exception &exception)
{
    ZQLog::appendLog(QStringLiteral("Exception running task %@: %@"), path,
                     QString::fromUtf8(exception.what()));
}

void reportToConsoleAndLog(const QString &path)
{
    platform::consoleLog(notExecutable(), path);
    ZQLog::appendLog(notExecutable(), path);
}

} // namespace

std::shared_ptr<ZQTaskEx> ZQTaskEx::create()
{
    return std::shared_ptr<ZQTaskEx>(new ZQTaskEx);
}

bool ZQTaskEx::runTask(const QString &path, const QStringList &arguments, Task *task)
{
    return runTask(path, arguments, task, nullptr);
}

bool ZQTaskEx::runTask(const QString &path, const QStringList &arguments, Task *task,
                       QByteArray *complaint)
{
    const auto process = silentProcess(path, arguments);
    if (complaint != nullptr) {
        process->setStandardError(platform::ChildProcess::Stream::Memory);
    }
    if (!isExecutable(*process)) {
        ZQLog::appendLogAndPrint(notExecutable(), path);
        return false;
    }
    try {
        if (task != nullptr) {
            task->set(process);
        }
        process->launch();
        process->waitUntilExit();
        if (complaint != nullptr) {
            *complaint = beginningOf(process->standardError());
        }
        return true;
    } catch (const std::exception &exception) {
        logException(path, exception);
        return false;
    }
}

void ZQTaskEx::runTaskAndReturn(const QString &path, const QStringList &arguments)
{
    const auto process = silentProcess(path, arguments);
    if (!isExecutable(*process)) {
        reportToConsoleAndLog(path);
        return;
    }
    try {
        process->launch();
    } catch (const std::exception &exception) {
        logException(path, exception);
    }
}

qint64 ZQTaskEx::terminationCodeFromTask(const QString &path, const QStringList &arguments,
                                         Task *task)
{
    const auto process = silentProcess(path, arguments);
    if (!isExecutable(*process)) {
        reportToConsoleAndLog(path);
        return -1;
    }
    if (task != nullptr) {
        task->set(process);
    }
    process->launch();
    process->waitUntilExit();
    return process->terminationStatus();
}
