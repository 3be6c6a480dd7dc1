// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <sys/types.h>

#include <vector>

// The processes whose requests are carried out: the one that has started us, and those of its
// children that it has named. Each is held by a descriptor, so that no later process is mistaken
// for it.
class Served {
public:
    // Pins the process that has started us, which must have made this socket as this user;
    // otherwise nobody is served.
    Served(int socket, uid_t user);

    // Readable when the process has ended that has started us; negative where there was none.
    int starter() const { return m_processes.empty() ? -1 : m_processes.front().pinned.fd(); }

    bool isStarter(pid_t process) const;

    // Whether what this process has sent came from one that is served.
    bool contains(pid_t process) const;

    // Serves the process of this descriptor, too. 0, or the system's error number: EINVAL if it
    // does not belong to a living process, EPERM if that process is not a child of the one that has
    // started us.
    int add(platform::Descriptor process);

private:
    struct Process {
        platform::Descriptor pinned;
        pid_t number;
    };
    std::vector<Process> m_processes; // the first has started us
};
