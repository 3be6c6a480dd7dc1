// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Processes/ChildExit.h"

#include <QMap>
#include <QStringList>

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

namespace platform {

// A command: an executable, arguments and where its streams lead. Set up and launched by one
// thread, once; from then on any thread may ask about it, wait for it and end it. Texts are file
// names' (see FileName.h), so that they can be any bytes. The command has no other descriptor of
// this process than its three streams, and the default signal dispositions. It outlives this
// object, and leaves no zombie when it ends then.
class ChildProcess {
public:
    using Environment = QMap<QString, QString>;
    // A memory takes all that is written and nobody waits for who reads it.
    enum class Stream { Inherited, NullDevice, Pipe, Memory };

    ChildProcess() = default;
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    // The path by which the command is known, and the file to execute where that is another.
    void setLaunchPath(const QString &path, const QString &executable = {});
    const QString &launchPath() const { return m_launchPath; }
    const QString &executable() const { return m_executable; }

    void setArguments(const QStringList &arguments) { m_arguments = arguments; }

    // Replaces the environment that the command inherits otherwise.
    void setEnvironment(const Environment &environment) { m_environment = environment; }

    // The streams are inherited unless set. Of a pipe this object keeps the other end.
    void setStandardInput(Stream stream) { m_streams[0] = stream; }
    void setStandardOutput(Stream stream) { m_streams[1] = stream; }
    void setStandardError(Stream stream) { m_streams[2] = stream; }

    // Throws an Exception "NSInvalidArgumentException" with the reason when it cannot be launched,
    // or has been already.
    void launch();

    // False before the launch.
    bool isRunning() const;

    // Returns when the command has ended. On the main thread of an application events are
    // dispatched meanwhile. Throws, as all that follows, when the command was not launched.
    void waitUntilExit();

    // Sends SIGTERM; nothing happens when the command has ended.
    void terminate();

    // The exit status, or the number of the signal that ended the command; ChildExit::unknownStatus
    // where something else has reaped it. Throws while the command runs.
    int terminationStatus() const;

    pid_t processIdentifier() const;

    // From now on nobody has to wait for the command to be rid of it. Nothing before the launch.
    void reapInBackground();

    // Our ends of the pipes and memories, from the launch on. A memory is read from its beginning
    // with positions. Not for several threads at once.
    Descriptor &standardInput() { return m_ends[0]; }
    Descriptor &standardOutput() { return m_ends[1]; }
    Descriptor &standardError() { return m_ends[2]; }

private:
    std::shared_ptr<ChildExit> child() const;
    std::shared_ptr<ChildExit> launchedChild() const;

    QString m_launchPath;
    QString m_executable;
    QStringList m_arguments;
    std::optional<Environment> m_environment;
    std::array<Stream, 3> m_streams{};
    std::array<Descriptor, 3> m_ends;

    mutable std::mutex m_mutex; // the launch against those who ask
    std::shared_ptr<ChildExit> m_child;
};

// A place for a command that several threads share.
class ChildProcessReference {
public:
    void set(std::shared_ptr<ChildProcess> process)
    {
        const std::lock_guard lock(m_mutex);
        m_process.swap(process); // what was there goes after the lock
    }
    void clear() { set(nullptr); }

    // Null where there is none.
    std::shared_ptr<ChildProcess> get() const
    {
        const std::lock_guard lock(m_mutex);
        return m_process;
    }

private:
    mutable std::mutex m_mutex;
    std::shared_ptr<ChildProcess> m_process;
};

} // namespace platform
