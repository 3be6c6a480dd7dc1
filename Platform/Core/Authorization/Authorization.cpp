// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Authorization/Authorization.h"

#include "Platform/Core/Authorization/PasswordAgent.h"
#include "Platform/Core/Authorization/ToolRequest.h"
#include "Platform/Core/Basics/DescriptorPair.h"
#include "Platform/Core/Basics/TrustedPath.h"
#include "Platform/Core/Processes/ChildExit.h"
#include "Platform/Core/Processes/SpawnProgram.h"
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Threads/WorkerThreads.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>

namespace platform {
namespace {

constexpr const char *pkexecPath = "/usr/bin/pkexec";

QString text(const char *characters)
{
    return QString::fromUtf8(characters);
}

// What is there without waiting.
QString pendingText(int descriptor)
{
    QByteArray bytes(8 * 1024, '\0');
    ::fcntl(descriptor, F_SETFL, O_NONBLOCK);
    const auto size = ::read(descriptor, bytes.data(), static_cast<std::size_t>(bytes.size()));
    bytes.resize(static_cast<int>(std::max<ssize_t>(size, 0)));
    return QString::fromUtf8(bytes).simplified();
}

// Returns when there is something to read in the channel, or its end; lets the agent answer
// meanwhile. Without polkit's bus the agent is left alone: pkexec ends then. False when this worker
// is to end, because its pane is closed.
bool waitForHelper(int channel, PasswordAgent *agent)
{
    constexpr int pollInterval = 200; // milliseconds
    bool isAgentThere = agent != nullptr;
    while (!WorkerThreads::currentThreadShouldStop()) {
        std::array<pollfd, 2> events{pollfd{channel, POLLIN, 0}, pollfd{-1, 0, 0}};
        isAgentThere = isAgentThere && agent->takeEvents(); // some may have been received already
        if (isAgentThere) {
            events[1] = agent->events();
        }
        if (::poll(events.data(), events.size(), pollInterval) < 0) {
            if (errno != EINTR) {
                return true;
            }
            continue;
        }
        if (events[0].revents != 0) {
            return true;
        }
    }
    return false;
}

// A helper that no longer reads its requests must not block the caller.
void limitSending(int socket)
{
    const timeval limit{std::chrono::duration_cast<std::chrono::seconds>(toolStartTimeout).count(),
                        0};
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

// Logs why pkexec has not started the helper. pkexec(1) has its exit statuses. Several reasons
// share one; only the message distinguishes them.
AuthorizationStatus explainRefusal(int exitStatus, const QString &message)
{
    if (exitStatus == 126) {
        consoleLine(text("The administrator's authentication was cancelled."));
        return AuthorizationStatus::Canceled;
    }
    if (message.contains(text("No authentication agent"))) {
        consoleLine(text("No polkit agent is running in this session, so nobody can be asked for "
                         "the administrator's password. Start the desktop's polkit agent."));
        return AuthorizationStatus::InteractionNotAllowed;
    }
    if (message.contains(text("Not authorized"))) {
        consoleLine(text("Not authorised as administrator: the dialog was cancelled, the "
                         "authentication failed, or polkit's rules do not allow it."));
        return AuthorizationStatus::Denied;
    }
    consoleLog(text("Unable to ask for the administrator's authorisation: %@"),
               message.isEmpty() ? text("pkexec ended with status %1").arg(exitStatus) : message);
    return AuthorizationStatus::Internal;
}

Authorization::Tool failure(AuthorizationStatus status, const QString &tool, const QString &reason)
{
    consoleLog(text("Unable to run %@ as administrator: %@"), tool, reason);
    return {status, {}};
}

} // namespace

// Where it is installed, and nowhere else: what a build folder holds, its owner can change.
QByteArray Authorization::helperPath()
{
    return QByteArrayLiteral(PLATFORM_COMMAND_FOLDER "/authorization-helper");
}

std::shared_ptr<Authorization> Authorization::create(AuthorizationStatus *status)
{
    *status = AuthorizationStatus::Internal;
    const auto helper = fileNameFromBytes(helperPath());
    if (::access(helperPath().constData(), F_OK) != 0) {
        consoleLog(text("Unable to ask for the administrator's authorisation: %@ is not installed. "
                        "Install it with: sudo cmake --install BUILD_FOLDER --component system"),
                   helper);
        return nullptr;
    }
    if (const auto trusted = openTrusted(helperPath().toStdString()); !trusted.file.isOpen()) {
        consoleLog(text("%@ is not run as administrator: %@"), helper,
                   text(trusted.objection.c_str()));
        return nullptr;
    }
    if (::access(pkexecPath, X_OK) != 0) {
        consoleLog(text("Unable to ask for the administrator's authorisation: %@ is not installed. "
                        "Install the package pkexec."),
                   text(pkexecPath));
        return nullptr;
    }
    *status = AuthorizationStatus::Success;
    return std::shared_ptr<Authorization>(new Authorization);
}

Authorization::~Authorization()
{
    m_socket.close();
    if (m_helper != nullptr) {
        m_helper->reapInBackground();
    }
}

AuthorizationStatus Authorization::acquire()
{
    return startHelper(nullptr);
}

AuthorizationStatus Authorization::acquire(const QString &user, const QString &password)
{
    PasswordAgent agent(user, password);
    QString error;
    if (!agent.start(&error)) {
        consoleLog(text("Unable to ask for the administrator's authorisation: polkit does not "
                        "answer (%@)."),
                   error);
        return AuthorizationStatus::Internal;
    }
    return startHelper(&agent);
}

AuthorizationStatus Authorization::startHelper(PasswordAgent *agent)
{
    auto channel = openSocketPair(SOCK_SEQPACKET);
    auto errors = openPipe();
    int error = errno;
    pid_t process = -1;
    if (channel && errors) {
        error = spawnProgram({pkexecPath,
                              {pkexecPath, "--disable-internal-agent", helperPath().toStdString()},
                              cleanEnvironment(),
                              {channel->second.fd(), nullDevice, errors->second.fd()}},
                             &process);
    }
    if (process < 0) {
        consoleLog(text("Unable to ask for the administrator's authorisation: %@"),
                   text(std::strerror(error)));
        return AuthorizationStatus::Internal;
    }
    channel->second.close();
    errors->second.close();
    auto helper = std::make_shared<ChildExit>(process);
    if (!waitForHelper(channel->first.fd(), agent)) {
        helper->signal(SIGTERM); // the dialog goes with pkexec
        channel->first.close();
        helper->wait();
        return AuthorizationStatus::Canceled;
    }
    auto greeting = receivePacket(channel->first.fd());
    if (!greeting || greeting->bytes != toolGreeting || greeting->descriptors.size() != 1) {
        channel->first.close();
        if (greeting && greeting->bytes != toolGreeting) {
            consoleLog(text("Unable to ask for the administrator's authorisation: %@ is of another "
                            "version. Install it with: sudo cmake --install BUILD_FOLDER "
                            "--component system"),
                       fileNameFromBytes(helperPath()));
            helper->reapInBackground();
            return AuthorizationStatus::Internal;
        }
        helper->wait();
        return explainRefusal(helper->status(), pendingText(errors->first.fd()));
    }
    m_socket = std::move(greeting->descriptors.front());
    limitSending(m_socket.fd());
    m_helper = std::move(helper);
    return AuthorizationStatus::Success;
}

bool Authorization::isAlive() const
{
    pollfd end{m_socket.fd(), 0, 0};
    return m_socket.isOpen() && !m_isLost.load(std::memory_order_relaxed) &&
           ::poll(&end, 1, 0) == 0;
}

// The helper's answer to a request that comes with this descriptor (negative: none); nothing, with
// the reason in errno, where none has come. The authorisation is lost then.
std::optional<std::int32_t> Authorization::answerTo(const std::string &request,
                                                    int descriptor) const
{
    auto reply = openPipe();
    if (!reply) {
        return errno;
    }
    const int pipe = reply->second.fd();
    const bool isSent = descriptor < 0 ? sendPacket(m_socket.fd(), request, {pipe})
                                       : sendPacket(m_socket.fd(), request, {pipe, descriptor});
    reply->second.close();
    const auto answer =
        isSent ? receiveToolReply(reply->first.fd(), toolStartTimeout) : std::nullopt;
    if (!answer) {
        m_isLost.store(true, std::memory_order_relaxed); // its end of the socket may close later
    }
    return answer;
}

Authorization::Tool Authorization::run(const QString &path, const QStringList &arguments,
                                       Output output) const
{
    std::vector<std::string> texts{fileNameBytes(path).toStdString()};
    for (const auto &argument : arguments) {
        texts.push_back(fileNameBytes(argument).toStdString());
    }
    const auto request = encodeToolRequest(texts);
    if (request.size() > maxToolRequest) {
        return failure(AuthorizationStatus::ToolExecuteFailure, path, text(std::strerror(E2BIG)));
    }
    if (!decodeToolRequest(request)) {
        return failure(AuthorizationStatus::ToolExecuteFailure, path, text(std::strerror(EINVAL)));
    }
    auto stream = openPipe();
    if (!stream) {
        return failure(AuthorizationStatus::ToolExecuteFailure, path, text(std::strerror(errno)));
    }
    const auto answer = answerTo(request, output == Output::Wanted ? stream->second.fd() : -1);
    if (!answer) {
        return failure(AuthorizationStatus::Internal, path,
                       errno == ETIMEDOUT || errno == EAGAIN
                           ? text("the authorisation helper does not answer")
                           : text("the authorisation helper has ended"));
    }
    stream->second.close();
    if (*answer != 0) {
        return failure(AuthorizationStatus::ToolExecuteFailure, path,
                       *answer == EPERM
                           ? text("others than root can change it, or a folder or link on the way")
                           : text(std::strerror(*answer)));
    }
    return {AuthorizationStatus::Success,
            output == Output::Wanted ? std::move(stream->first) : Descriptor()};
}

} // namespace platform
