// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Processes/ChildProcess.h"
#include "Platform/Core/Text/FileName.h"

#include <fcntl.h>
#include <spawn.h>

#include <cerrno>
#include <csignal>
#include <vector>

namespace platform {
namespace {

constexpr int pipeSize = 1 << 20;

Exception failure(const QString &reason)
{
    return {QStringLiteral("NSInvalidArgumentException"), reason};
}

Exception systemFailure(int error)
{
    return failure(qt_error_string(error));
}

// Out of the way of the three standard streams, which this process may have closed.
Descriptor aboveStandardStreams(Descriptor file)
{
    if (file.number() > STDERR_FILENO) {
        return file;
    }
    Descriptor other(
        ::fcntl(file.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1)); // NOLINT(*-vararg)
    if (!other.isOpen()) {
        throw systemFailure(errno);
    }
    return other;
}

Descriptor openNullDevice()
{
    Descriptor file(::open("/dev/null", O_RDWR | O_CLOEXEC)); // NOLINT(*-vararg)
    if (!file.isOpen()) {
        throw failure(QStringLiteral("/dev/null: ") + qt_error_string(errno));
    }
    return aboveStandardStreams(std::move(file));
}

struct Pipe {
    Descriptor reading;
    Descriptor writing;
};

Pipe openPipe()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw systemFailure(errno);
    }
    Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    return {aboveStandardStreams(std::move(reading)), aboveStandardStreams(std::move(writing))};
}

// Texts as the system takes them: an array of C strings with a null behind the last.
class Strings {
public:
    void add(const QByteArray &text)
    {
        if (text.contains('\0')) {
            throw failure(QStringLiteral("A text holds a null character"));
        }
        m_texts.push_back(text);
    }

    // Valid until the next add().
    char *const *array()
    {
        m_pointers.clear();
        for (auto &text : m_texts) {
            m_pointers.push_back(text.data());
        }
        m_pointers.push_back(nullptr);
        return m_pointers.data();
    }

private:
    std::vector<QByteArray> m_texts;
    std::vector<char *> m_pointers;
};

Strings environmentOf(const ChildProcess::Environment &variables)
{
    Strings strings;
    for (auto it = variables.begin(); it != variables.end(); ++it) {
        const auto name = fileNameBytes(it.key());
        if (name.isEmpty() || name.contains('=')) {
            throw failure(QStringLiteral("Not the name of a variable: \"%1\"").arg(it.key()));
        }
        strings.add(name + '=' + fileNameBytes(it.value()));
    }
    return strings;
}

class SpawnActions {
public:
    SpawnActions() { ::posix_spawn_file_actions_init(&m_actions); }
    ~SpawnActions() { ::posix_spawn_file_actions_destroy(&m_actions); }
    SpawnActions(const SpawnActions &) = delete;
    SpawnActions &operator=(const SpawnActions &) = delete;

    void add(int source, int stream)
    {
        check(::posix_spawn_file_actions_adddup2(&m_actions, source, stream));
    }
    // Even what somebody has opened without close-on-exec.
    void closeAllOthers()
    {
        check(::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1));
    }
    const posix_spawn_file_actions_t *get() const { return &m_actions; }

private:
    static void check(int error)
    {
        if (error != 0) {
            throw systemFailure(error);
        }
    }

    posix_spawn_file_actions_t m_actions{};
};

// No signal blocked or ignored, whatever this thread and this process do with them.
class SpawnAttributes {
public:
    SpawnAttributes()
    {
        ::posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&m_attributes, &signals);
        ::sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&m_attributes); }
    SpawnAttributes(const SpawnAttributes &) = delete;
    SpawnAttributes &operator=(const SpawnAttributes &) = delete;

    const posix_spawnattr_t *get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes{};
};

} // namespace

void ChildProcess::launch()
{
    const std::lock_guard lock(m_mutex);
    if (m_child != nullptr) {
        throw failure(QStringLiteral("task already launched"));
    }
    Strings arguments;
    arguments.add(fileNameBytes(m_executable));
    for (const auto &argument : m_arguments) {
        arguments.add(fileNameBytes(argument));
    }
    auto environment = environmentOf(m_environment.value_or(Environment()));

    Descriptor null;
    std::array<Descriptor, 3> theirs;
    std::array<Descriptor, 3> ours;
    SpawnActions actions;
    for (std::size_t i = 0; i < m_streams.size(); ++i) {
        const auto stream = static_cast<int>(i);
        if (m_streams.at(i) == Stream::NullDevice) {
            if (!null.isOpen()) {
                null = openNullDevice();
            }
            actions.add(null.number(), stream);
        } else if (m_streams.at(i) == Stream::Pipe) {
            auto pipe = openPipe();
            const bool isInput = stream == STDIN_FILENO;
            ours.at(i) = std::move(isInput ? pipe.writing : pipe.reading);
            theirs.at(i) = std::move(isInput ? pipe.reading : pipe.writing);
            // Only makes it faster; a user may not have many large pipes.
            ::fcntl(ours.at(i).number(), F_SETPIPE_SZ, pipeSize); // NOLINT(*-vararg)
            actions.add(theirs.at(i).number(), stream);
        }
    }
    actions.closeAllOthers();

    const SpawnAttributes attributes;
    pid_t child = -1;
    const auto error = ::posix_spawn(&child, fileNameBytes(m_executable).constData(), actions.get(),
                                     attributes.get(), arguments.array(),
                                     m_environment.has_value() ? environment.array() : ::environ);
    if (error != 0) {
        throw systemFailure(error);
    }
    m_child = std::make_shared<ChildExit>(child);
    m_ends = std::move(ours);
}

} // namespace platform
