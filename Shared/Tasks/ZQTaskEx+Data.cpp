// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/ReadToEnd.h"
#include "Platform/Core/Text/Console.h"
#include "Shared/Log/ZQLog.h"
#include "Shared/Tasks/ZQTaskCommand.h"
#include "Shared/Tasks/ZQTaskEx.h"

#include <algorithm>

using Stream = platform::ChildProcess::Stream;

namespace {

QByteArray outputOf(platform::ChildProcess &process)
{
    QByteArray output("");
    if (process.standardOutput().isOpen()) {
        output = platform::readToEnd(process.standardOutput().fd());
    }
    const auto error = platform::readToEnd(process.standardError().fd());
    return output.isEmpty() ? error : output;
}

// What is left of a command that nobody reads any more.
class EndOfReading {
public:
    explicit EndOfReading(platform::ChildProcess &process) : m_process(process) {}
    ~EndOfReading()
    {
        m_process.standardOutput().close();
        m_process.standardError().close();
        m_process.reapInBackground();
    }
    EndOfReading(const EndOfReading &) = delete;
    EndOfReading &operator=(const EndOfReading &) = delete;

private:
    platform::ChildProcess &m_process;
};

bool isAscii(const QByteArray &data)
{
    return std::all_of(data.begin(), data.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

// Null where that is not UTF-8.
QString fromUtf8(const QByteArray &data)
{
    static const QByteArray mark("\xEF\xBB\xBF"); // a character here, though Qt leaves it out
    auto text = QString::fromUtf8(data.constData(), data.size()); // the whole, nulls too
    if (data.startsWith(mark) && !text.startsWith(QChar(QChar::ByteOrderMark))) {
        text.prepend(QChar(QChar::ByteOrderMark));
    }
    return text.toUtf8() == data ? text : QString();
}

QString decoded(const QByteArray &data, ZQTaskEx::Encoding encoding)
{
    if (data.isEmpty()) {
        return QStringLiteral("");
    }
    switch (encoding) {
    case ZQTaskEx::Encoding::ASCII:
        return isAscii(data) ? QString::fromLatin1(data.constData(), data.size()) : QString();
    case ZQTaskEx::Encoding::UTF8:
        return fromUtf8(data);
    case ZQTaskEx::Encoding::Latin1:
        return QString::fromLatin1(data.constData(), data.size());
    }
    return {};
}

} // namespace

QByteArray ZQTaskEx::dataFromTask(const QString &path, const QStringList &arguments, Task *task,
                                  const std::optional<Environment> &environment,
                                  LogOutput logOutput)
{
    const auto process = taskProcess(path, arguments);
    if (!isExecutable(*process)) {
        ZQLog::appendLogAndPrint(QStringLiteral("Error: %@ is not executable"), path);
        return {};
    }
    try {
        if (task != nullptr) {
            task->set(process);
        }
        if (environment.has_value()) {
            process->setEnvironment(*environment);
        }
        process->setStandardInput(Stream::Pipe);
        process->setStandardOutput(logOutput == LogOutput::Yes ? Stream::Pipe : Stream::Inherited);
        process->setStandardError(Stream::Pipe);
        process->launch();
        const EndOfReading end(*process);
        return outputOf(*process);
    } catch (const std::exception &exception) {
        platform::consoleLog(QStringLiteral("Exception running task %@: %@"), path,
                             QString::fromUtf8(exception.what()));
        return {};
    }
}

QString ZQTaskEx::stringFromTask(const QString &path, const QStringList &arguments, Task *task)
{
    return stringFromTask(path, arguments, Encoding::ASCII, task);
}

QString ZQTaskEx::stringFromTask(const QString &path, const QStringList &arguments,
                                 Encoding encoding, Task *task)
{
    return decoded(dataFromTask(path, arguments, task), encoding);
}

QString ZQTaskEx::stringFromTask(const QString &path, const QStringList &arguments, Timeout timeout)
{
    return stringFromTask(path, arguments, Encoding::ASCII, timeout);
}

QString ZQTaskEx::stringFromTask(const QString &path, const QStringList &arguments,
                                 Encoding encoding, Timeout timeout)
{
    return decoded(dataFromTask(path, arguments, timeout), encoding);
}
