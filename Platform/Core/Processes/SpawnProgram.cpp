// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/SpawnProgram.h"

#include <fcntl.h>
#include <spawn.h>

#include <cerrno>
#include <csignal>

namespace platform {
namespace {

class Spawning {
public:
    Spawning()
    {
        ::posix_spawn_file_actions_init(&m_actions);
        ::posix_spawnattr_init(&m_attributes);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        sigset_t signals;
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&m_attributes, &signals);
        ::sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
    }
    ~Spawning()
    {
        ::posix_spawn_file_actions_destroy(&m_actions);
        ::posix_spawnattr_destroy(&m_attributes);
    }
    Spawning(const Spawning &) = delete;
    Spawning &operator=(const Spawning &) = delete;

    // A copy is put there, so that putting one in its place overwrites no other.
    int setStream(int stream, int source)
    {
        Descriptor null;
        if (source == nullDevice) {
            null = Descriptor(::open("/dev/null", O_RDWR | O_CLOEXEC)); // NOLINT(*-vararg)
            source = null.fd();
        }
        auto &copy = m_copies.at(static_cast<std::size_t>(stream));
        copy = source < 0 ? Descriptor() : copyAboveStandardStreams(source);
        return copy.isOpen() ? ::posix_spawn_file_actions_adddup2(&m_actions, copy.fd(), stream)
                             : errno;
    }

    int run(Program &program, pid_t *process)
    {
        auto *const *environment = ::environ;
        std::vector<char *> ownEnvironment;
        if (program.environment) {
            ownEnvironment = textPointers(*program.environment);
            environment = ownEnvironment.data();
        }
        // Even what somebody has opened without close-on-exec.
        const int error = ::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
        return error != 0 ? error
                          : ::posix_spawn(process, program.path.c_str(), &m_actions, &m_attributes,
                                          textPointers(program.arguments).data(), environment);
    }

private:
    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
    std::array<Descriptor, 3> m_copies;
};

} // namespace

Descriptor copyAboveStandardStreams(int descriptor)
{
    return Descriptor(::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)); // NOLINT(*-vararg)
}

int spawnProgram(Program program, pid_t *process)
{
    Spawning spawning;
    for (int stream = 0; stream < 3; ++stream) {
        const int source = program.streams.at(static_cast<std::size_t>(stream));
        const int error = source == inheritedStream ? 0 : spawning.setStream(stream, source);
        if (error != 0) {
            return error;
        }
    }
    return spawning.run(program, process);
}

} // namespace platform
