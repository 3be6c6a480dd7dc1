// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/authorization-helper/Served.h"

#include "Platform/Core/Processes/ProcessDescriptor.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace {

using platform::Descriptor;

struct Origin {
    pid_t parent = 0;
    unsigned long long start = 0; // clock ticks since the system's
};

// All 0 for a process that is not there.
Origin originOf(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    // The name in parentheses may hold anything, also parentheses.
    std::string text((std::istreambuf_iterator<char>(file)), {});
    text.erase(0, std::min(text.rfind(')'), text.size() - 1) + 1);
    Origin origin;
    std::string field;
    constexpr int parentField = 4; // see proc(5)
    constexpr int startField = 22;
    std::istringstream fields(text);
    for (int number = 3; number <= startField && fields >> field; ++number) {
        if (number == parentField) {
            origin.parent = std::stoi(field);
        } else if (number == startField) {
            origin.start = std::stoull(field);
        }
    }
    return origin;
}

// That of a process's descriptor; 0 for any other, negative when the process has ended.
pid_t numberOf(const Descriptor &process)
{
    std::ifstream file("/proc/self/fdinfo/" + std::to_string(process.fd()));
    for (std::string word; file >> word;) {
        if (word == "Pid:" && file >> word) {
            return std::stoi(word);
        }
    }
    return 0;
}

bool hasEnded(const Descriptor &process)
{
    pollfd end{process.fd(), POLLIN, 0};
    return ::poll(&end, 1, 0) != 0;
}

} // namespace

Served::Served(int socket, uid_t user)
{
    ucred maker{};
    socklen_t size = sizeof maker;
    const auto parent = ::getppid();
    auto pinned = platform::openProcess(parent);
    // Still our parent, it cannot have ended before it was pinned.
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &maker, &size) == 0 && pinned.isOpen() &&
        maker.uid == user && maker.pid == parent && ::getppid() == parent &&
        originOf(parent).start <= originOf(::getpid()).start) {
        m_processes.push_back({std::move(pinned), parent});
    }
}

bool Served::isStarter(pid_t process) const
{
    return !m_processes.empty() && m_processes.front().number == process;
}

bool Served::contains(pid_t process) const
{
    return std::any_of(m_processes.begin(), m_processes.end(), [process](const Process &served) {
        return served.number == process && !hasEnded(served.pinned);
    });
}

int Served::add(Descriptor process)
{
    const auto number = numberOf(process);
    if (number <= 0) {
        return EINVAL;
    }
    const auto origin = originOf(number);
    if (hasEnded(process)) {
        return EINVAL; // what was read may be another's
    }
    if (!isStarter(origin.parent) || origin.start < originOf(origin.parent).start) {
        return EPERM;
    }
    m_processes.erase(std::remove_if(m_processes.begin() + 1, m_processes.end(),
                                     [](const Process &served) { return hasEnded(served.pinned); }),
                      m_processes.end());
    m_processes.push_back({std::move(process), number});
    return 0;
}
