// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Authorization/Authorization.h"
#include "Platform/Core/Authorization/ToolRequest.h"
#include "Platform/Core/Basics/DescriptorPair.h"
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Processes/ChildExit.h"
#include "Platform/Core/Processes/ProcessDescriptor.h"
#include "Platform/Core/Text/Console.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <mutex>
#include <optional>

namespace platform {
namespace {

// Announces the number of an inherited descriptor and nothing more: what that leads to has to prove
// that it is our helper.
constexpr const char *variable = "CORVANE_AUTHORIZATION";

int announcedDescriptor()
{
    bool isNumber = false;
    const int number = qgetenv(variable).toInt(&isNumber);
    return isNumber && number > STDERR_FILENO && ::fcntl(number, F_GETFD) >= 0 ? number : -1;
}

// The process that made the other end; nothing where the socket is another kind.
std::optional<ucred> processBehind(int socket)
{
    int kind = 0;
    socklen_t size = sizeof kind;
    if (::getsockopt(socket, SOL_SOCKET, SO_TYPE, &kind, &size) != 0 || kind != SOCK_SEQPACKET) {
        return {};
    }
    ucred peer{};
    size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? std::optional(peer)
                                                                            : std::nullopt;
}

// The socket for requests, which our parent sends once it has named us to the helper; not open
// where it has not.
Descriptor socketFromParent(int channel)
{
    const auto parent = processBehind(channel);
    if (!parent || parent->pid != ::getppid() || !becomesReadable(channel, toolStartTimeout)) {
        return {};
    }
    auto packet = receivePacket(channel);
    return packet && packet->bytes == toolGreeting && packet->descriptors.size() == 1
               ? std::move(packet->descriptors.front())
               : Descriptor();
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

bool isOurHelper(int socket, const QByteArray &path)
{
    const auto helper = processBehind(socket);
    return helper && helper->uid == 0 && helper->pid > 0 && runsProgram(helper->pid, path);
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
    auto socket = socketFromParent(number);
    if (!socket.isOpen() || !isOurHelper(socket.fd(), helperPath())) {
        return nullptr;
    }
    auto authorization = std::shared_ptr<Authorization>(new Authorization);
    authorization->m_socket = std::move(socket);
    if (authorization->answerTo(encodeToolRequest({}), -1) != 0) {
        return nullptr;
    }
    isTaken = true;
    ::close(number);
    return authorization;
}

Authorization::Inheritance Authorization::handDown() const
{
    auto ends = m_socket.isOpen() ? openSocketPair(SOCK_SEQPACKET) : std::nullopt;
    if (!ends) {
        return {};
    }
    Inheritance inheritance{std::move(ends->first), {}, std::move(ends->second)};
    inheritance.environmentEntry =
        QByteArray(variable) + '=' + QByteArray::number(inheritance.descriptor.fd());
    return inheritance;
}

bool Authorization::nameChild(pid_t child, Inheritance inheritance) const
{
    const auto process = openProcess(child);
    const auto answer =
        process.isOpen() ? answerTo(encodeToolRequest({}), process.fd()) : std::optional(errno);
    if (answer != 0) {
        consoleLog(QStringLiteral("Unable to hand the authorisation down: %@"),
                   QString::fromUtf8(std::strerror(answer.value_or(errno))));
        return false;
    }
    return sendPacket(inheritance.ours.fd(), toolGreeting, {m_socket.fd()});
}

} // namespace platform
