// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
//
// authorization-helper: runs tools as root for the process that polkit has let start it.
//
// pkexec starts it once the administrator's password is given, with one end of a socket as standard
// input. It sends back one end of another socket, the one for requests, and serves over that the
// process that has started it, and such children as that names. There is no name by which anybody
// else could reach it, and who takes the socket out of that process is refused. A request comes
// with a pipe for the answer, so that any number of threads and processes may share the socket; see
// Platform/Core/Authorization/ToolRequest.h for its bytes. Plain C++ over the system's calls, to be
// read in one sitting.

#include "Commands/authorization-helper/CleanState.h"
#include "Commands/authorization-helper/Served.h"
#include "Commands/authorization-helper/Tool.h"
#include "Platform/Core/Authorization/ToolRequest.h"
#include "Platform/Core/Basics/DescriptorPair.h"
#include "Platform/Core/Text/LogText.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using platform::Descriptor;

// A line for the administrator, as sudo and pkexec write one.
void note(uid_t user, const std::string &line)
{
    ::syslog(LOG_AUTHPRIV | LOG_NOTICE, "for user %u: %.4000s", user, line.c_str());
}

// The user whom polkit was asked about. Only root can have set pkexec's variable.
std::optional<uid_t> userOfPkexec()
{
    const char *text = std::getenv("PKEXEC_UID");
    if (::getuid() != 0 || ::geteuid() != 0 || text == nullptr) {
        return {};
    }
    const char *end = text + std::strlen(text);
    uid_t user = 0;
    const auto [rest, error] = std::from_chars(text, end, user);
    return error == std::errc() && rest == end ? std::optional(user) : std::nullopt;
}

// The socket that takes the requests, after its other end has been sent to the starter.
Descriptor openForRequests()
{
    auto ends = platform::openSocketPair(SOCK_SEQPACKET);
    const int yes = 1;
    if (!ends || ::setsockopt(ends->first.fd(), SOL_SOCKET, SO_PASSCRED, &yes, sizeof yes) != 0 ||
        !platform::sendPacket(STDIN_FILENO, platform::toolGreeting, {ends->second.fd()})) {
        return {};
    }
    return std::move(ends->first);
}

void leaveStandardDescriptors()
{
    const Descriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::dup2(null.fd(), number);
    }
}

// Becomes readable when a tool ends.
Descriptor watchTools()
{
    sigset_t ends;
    ::sigemptyset(&ends);
    ::sigaddset(&ends, SIGCHLD);
    ::sigprocmask(SIG_BLOCK, &ends, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // nobody may be waiting for an answer any more
    return Descriptor(::signalfd(-1, &ends, SFD_CLOEXEC | SFD_NONBLOCK));
}

bool isPipe(const Descriptor &descriptor)
{
    struct stat status {};
    return ::fstat(descriptor.fd(), &status) == 0 && S_ISFIFO(status.st_mode);
}

// A client that has given up must not have its tool started later.
bool isAwaited(const Descriptor &pipe)
{
    pollfd reader{pipe.fd(), 0, 0};
    return ::poll(&reader, 1, 0) == 0;
}

class Service {
public:
    Service(uid_t user, Served &served, Descriptor requests, Descriptor ends)
        : m_user(user), m_served(served), m_requests(std::move(requests)), m_ends(std::move(ends))
    {
    }

    // Runs until no process that is served is left. Then waits for the tools that still run, to log
    // failures.
    void run()
    {
        while (m_requests.isOpen() || !m_tools.empty()) {
            std::array<pollfd, 3> events{pollfd{m_ends.fd(), POLLIN, 0},
                                         pollfd{m_requests.fd(), POLLIN | POLLRDHUP, 0},
                                         pollfd{m_served.starter(), POLLIN, 0}};
            const auto watched = m_requests.isOpen() ? events.size() : 1;
            if (::poll(events.data(), watched, -1) < 0) {
                continue;
            }
            reap();
            if (events[2].revents != 0) {
                m_requests.close();
            } else if (events[1].revents != 0) {
                takeRequest((events[1].revents & (POLLHUP | POLLRDHUP)) != 0);
            }
        }
    }

private:
    void takeRequest(bool isLeft)
    {
        auto packet = platform::receivePacket(m_requests.fd());
        if (!packet) {
            if (isLeft) { // not only an empty packet
                m_requests.close();
            }
            return;
        }
        const std::int32_t result = serve(*packet);
        if (!packet->descriptors.empty() && isPipe(packet->descriptors.front())) {
            const int pipe = packet->descriptors.front().fd();
            ::fcntl(pipe, F_SETFL, O_NONBLOCK); // a full one is the client's own affair
            while (::write(pipe, &result, sizeof result) < 0 && errno == EINTR) {
            }
        }
    }

    // 0, or the system's error number.
    int serve(platform::Packet &packet)
    {
        const auto sender = packet.sender.value_or(ucred{});
        if (!packet.sender || sender.uid != m_user || !m_served.contains(sender.pid)) {
            if (std::exchange(m_lastRefused, sender.pid) != sender.pid) {
                note(m_user, "refused process " + std::to_string(sender.pid) + " of user " +
                                 std::to_string(sender.uid) + ", which is not the one that asked");
            }
            return EPERM;
        }
        if (!packet.isWhole) {
            return E2BIG;
        }
        const auto words = platform::decodeToolRequest(packet.bytes);
        auto &descriptors = packet.descriptors;
        if (!words || descriptors.empty() || descriptors.size() > 2 || !isPipe(descriptors[0])) {
            return EINVAL;
        }
        const bool hasMore = descriptors.size() == 2;
        if (words->empty()) {
            return hasMore ? takeChild(sender.pid, std::move(descriptors[1])) : 0;
        }
        if (hasMore && !isPipe(descriptors[1])) {
            return EINVAL;
        }
        return isAwaited(descriptors[0]) ? start(*words, hasMore ? descriptors[1].fd() : -1)
                                         : ECANCELED;
    }

    int takeChild(pid_t parent, Descriptor child)
    {
        return m_served.isStarter(parent) ? m_served.add(std::move(child)) : EPERM;
    }

    int start(const std::vector<std::string> &words, int output)
    {
        auto tool = findTool(words);
        auto line = platform::logText(tool.path);
        for (std::size_t i = 1; i < words.size(); ++i) {
            line += ' ' + platform::logText(words[i]);
        }
        if (tool.error != 0) {
            note(m_user, "refused, " + tool.objection + ": " + line);
            return tool.error;
        }
        note(m_user, line);
        pid_t process = -1;
        const int error = startTool(tool, output, &process);
        if (error == 0) {
            m_tools[process] = platform::logText(tool.path);
        } else {
            note(m_user, "not started, " + std::string(std::strerror(error)) + ": " + line);
        }
        return error;
    }

    void reap()
    {
        std::array<signalfd_siginfo, 8> signals{};
        while (::read(m_ends.fd(), signals.data(), sizeof signals) > 0) {
        }
        int status = 0;
        for (pid_t process = 0; (process = ::waitpid(-1, &status, WNOHANG)) > 0;) {
            const auto tool = m_tools.find(process);
            if (tool == m_tools.end()) {
                continue; // it could not be started
            }
            if (WIFSIGNALED(status)) {
                note(m_user, tool->second + " was ended by signal " +
                                 std::to_string(WTERMSIG(status)) + " (" +
                                 ::strsignal(WTERMSIG(status)) + ')');
            } else if (WEXITSTATUS(status) != 0) {
                note(m_user,
                     tool->second + " ended with status " + std::to_string(WEXITSTATUS(status)));
            }
            m_tools.erase(tool);
        }
    }

    const uid_t m_user;
    Served &m_served;
    Descriptor m_requests; // closed when nobody is served any more
    const Descriptor m_ends;
    pid_t m_lastRefused = -1;             // logged once
    std::map<pid_t, std::string> m_tools; // that run, with their paths for the log
};

} // namespace

int main()
{
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    const auto user = userOfPkexec();
    Served served(STDIN_FILENO, user.value_or(0));
    if (!user || served.starter() < 0) {
        std::fputs(
            "authorization-helper can only be started by pkexec, for a program of Ostrel's\n",
            stderr);
        return EXIT_FAILURE;
    }
    bool isFatal = false;
    const auto left = cleanState(&isFatal);
    ::openlog("ostrel-authorization-helper", LOG_PID, LOG_AUTHPRIV);
    if (!left.empty()) {
        const auto line = "this setting of the client cannot be undone: " + left;
        note(*user, line);
        std::fprintf(stderr, "%s\n", line.c_str()); // it tells its console where it is fatal
    }
    auto ends = watchTools();
    auto requests = isFatal ? Descriptor() : openForRequests();
    if (!requests.isOpen()) {
        return EXIT_FAILURE;
    }
    leaveStandardDescriptors();
    Service(*user, served, std::move(requests), std::move(ends)).run();
    return EXIT_SUCCESS;
}
