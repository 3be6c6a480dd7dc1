// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/CleanProcess.h"

#include "Platform/Core/Basics/Descriptor.h"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <vector>

namespace platform {
namespace {

std::vector<char *> pointers(QList<QByteArray> &texts)
{
    std::vector<char *> result;
    for (auto &text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

// A copy above the standard descriptors, so that putting one in its place overwrites no other. Not
// open, with the system's error number in error, where there is none.
Descriptor copyAboveStandard(int descriptor, int *error)
{
    Descriptor null;
    if (descriptor < 0) {
        null = Descriptor(::open("/dev/null", O_RDWR | O_CLOEXEC));
        descriptor = null.number();
    }
    Descriptor copy(descriptor < 0 ? -1 : ::fcntl(descriptor, F_DUPFD_CLOEXEC, 3));
    if (!copy.isOpen()) {
        *error = errno;
    }
    return copy;
}

} // namespace

pid_t startCleanProcess(const QByteArray &path, const QList<QByteArray> &arguments,
                        const StandardDescriptors &descriptors, int *error)
{
    *error = 0;
    const std::array copies{copyAboveStandard(descriptors.input, error),
                            copyAboveStandard(descriptors.output, error),
                            copyAboveStandard(descriptors.error, error)};
    if (*error != 0) {
        return -1;
    }
    auto words = QList<QByteArray>{path} + arguments;
    QList<QByteArray> variables{QByteArrayLiteral("PATH=/usr/sbin:/usr/bin:/sbin:/bin"),
                                QByteArrayLiteral("LANG=C.UTF-8")};
    sigset_t signals;
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes, &signals);
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes, &signals);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    for (int number = 0; number < 3 && *error == 0; ++number) {
        const auto &copy = copies.at(static_cast<std::size_t>(number));
        *error = ::posix_spawn_file_actions_adddup2(&actions, copy.number(), number);
    }
    if (*error == 0) {
        *error = ::posix_spawn_file_actions_addclosefrom_np(&actions, 3);
    }
    pid_t process = -1;
    if (*error == 0) {
        *error = ::posix_spawn(&process, path.constData(), &actions, &attributes,
                               pointers(words).data(), pointers(variables).data());
    }
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
    return *error == 0 ? process : -1;
}

} // namespace platform
