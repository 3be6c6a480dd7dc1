// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Authorization.h"
#include "Platform/ChildExit.h"
#include "Platform/FileContents.h"
#include "Platform/ToolRequest.h"

#include <QDeadlineTimer>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <mutex>

namespace platform {
namespace {

// Announces the number of an inherited descriptor and nothing more: what that leads to has to prove
// that it is our helper.
constexpr const char *variable = "OSTREL_AUTHORIZATION";

constexpr int longestWait = 2000; // milliseconds for the helper's sign of life

int announcedDescriptor()
{
    bool isNumber = false;
    const int number = qgetenv(variable).toInt(&isNumber);
    return isNumber && number > STDERR_FILENO && ::fcntl(number, F_GETFD) >= 0 ? number : -1;
}

// The process that made the other end; 0 where that is not root's or the socket is another kind.
pid_t rootBehind(int socket)
{
    int kind = 0;
    socklen_t size = sizeof kind;
    if (::getsockopt(socket, SOL_SOCKET, SO_TYPE, &kind, &size) != 0 || kind != SOCK_SEQPACKET) {
        return 0;
    }
    ucred peer{};
    size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == 0
               ? peer.pid
               : 0;
}

// Only root sees the link to the program of root's process; its first argument everybody does, and
// only root can have chosen it.
bool runsProgram(pid_t process, const QByteArray &path)
{
    const auto folder = QStringLiteral("/proc/%1").arg(process);
    std::array<char, PATH_MAX> program{};
    const auto link = (folder + QStringLiteral("/exe")).toUtf8();
    const auto size = ::readlink(link.constData(), program.data(), program.size());
    if (size >= 0) {
        return path == QByteArray(program.data(), static_cast<int>(size));
    }
    const auto arguments = contentsOfFile(folder + QStringLiteral("/cmdline"), PATH_MAX);
    return arguments && arguments->split('\0').first() == path;
}

bool answers(int socket)
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return false;
    }
    const Descriptor reply(ends[0]);
    Descriptor theirs(ends[1]);
    if (!sendPacket(socket, encodeToolRequest({}), {theirs.number()})) {
        return false;
    }
    theirs.close();
    pollfd readable{reply.number(), POLLIN, 0};
    const QDeadlineTimer end(longestWait);
    int ready = 0;
    do {
        ready = ::poll(&readable, 1, static_cast<int>(end.remainingTime()));
    } while (ready < 0 && errno == EINTR);
    return ready == 1 && receiveToolReply(reply.number()) == 0;
}

} // namespace

std::shared_ptr<Authorization> Authorization::handedDown()
{
    static std::mutex mutex;
    static bool isTaken = false;
    const std::lock_guard lock(mutex);
    const int number = announcedDescriptor();
    if (number < 0 || isTaken) {
        return nullptr;
    }
    const auto process = rootBehind(number);
    if (process <= 0 || !runsProgram(process, helperPath()) || !answers(number)) {
        return nullptr;
    }
    isTaken = true;
    ::fcntl(number, F_SETFD, FD_CLOEXEC);
    auto authorization = std::shared_ptr<Authorization>(new Authorization);
    authorization->m_socket = Descriptor(number);
    return authorization;
}

Authorization::Inheritance Authorization::handDown() const
{
    if (!m_socket.isOpen()) {
        return {};
    }
    Inheritance inheritance{Descriptor(::fcntl(m_socket.number(), F_DUPFD_CLOEXEC, 3)), {}};
    inheritance.environmentEntry =
        QByteArray(variable) + '=' + QByteArray::number(inheritance.descriptor.number());
    return inheritance;
}

} // namespace platform
