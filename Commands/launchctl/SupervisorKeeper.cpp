// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/launchctl/SupervisorKeeper.h"

#include "Commands/Jobs/LaunchSession.h"
#include "Commands/Jobs/Messages.h"
#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/SystemCommand.h"
#include "Platform/Core/Text/FileName.h"

#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <thread>

namespace {

constexpr std::chrono::milliseconds retryPause{20};

// An open descriptor where a supervisor listens. The current folder becomes the socket's, whose
// path may be longer than an address.
platform::Descriptor connectToSupervisor()
{
    const auto folder = platform::jobControlFolder();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, platform::supervisorSocketName, sizeof address.sun_path - 1);
    const auto *generic =
        reinterpret_cast<const sockaddr *>(&address); // NOLINT(*-reinterpret-cast)
    platform::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (folder.isEmpty() || ::chdir(folder.constData()) != 0 ||
        ::connect(socket.number(), generic, sizeof address) != 0) {
        socket.close();
    }
    return socket;
}

// Null when one runs afterwards, be it this one or another's.
QString startSupervisor()
{
    const auto folder = platform::privateCommandFolder();
    auto program = platform::fileNameBytes(folder) + "/job-supervisor";
    const std::array<char *, 2> arguments{program.data(), nullptr};
    pid_t pid = 0;
    const auto result =
        ::posix_spawn(&pid, program.constData(), nullptr, nullptr, arguments.data(), environ);
    auto status = 0;
    if (result == 0) {
        while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
    }
    if (result != 0) {
        return QStringLiteral("%1 cannot be run: %2")
            .arg(platform::readableName(program),
                 QString::fromLocal8Bit(std::strerror(result))); // NOLINT(concurrency-mt-unsafe)
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0
               ? QString()
               : QStringLiteral("the supervisor could not be started");
}

} // namespace

// Empty where no whole answer came.
QByteArray SupervisorKeeper::exchange(int socket, const QByteArray &request) const
{
    auto rest = request;
    auto isSent = false;
    QByteArray answer;
    std::array<char, 4096> buffer{};
    while (!m_deadline.isOver()) {
        pollfd event{socket, static_cast<short>(isSent ? POLLIN : POLLOUT), 0};
        ::poll(&event, 1, static_cast<int>(m_deadline.left().count()));
        const auto size = isSent ? ::recv(socket, buffer.data(), buffer.size(), 0)
                                 : ::send(socket, rest.constData(),
                                          static_cast<std::size_t>(rest.size()), MSG_NOSIGNAL);
        if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
            continue;
        }
        if (size < 0 || (isSent && size == 0)) {
            return answer.endsWith('\0') ? answer : QByteArray();
        }
        if (isSent) {
            answer.append(buffer.data(), static_cast<int>(size));
        } else {
            rest.remove(0, static_cast<int>(size));
            isSent = rest.isEmpty();
        }
        if (isSent && size > 0 && rest.isEmpty()) {
            ::shutdown(socket, SHUT_WR);
        }
    }
    return {};
}

std::optional<QByteArrayList> SupervisorKeeper::ask(const QByteArrayList &request, Start start,
                                                    QString *error)
{
    // One that is about to end hangs up without an answer; then the next is asked.
    while (!m_deadline.isOver()) {
        const auto socket = connectToSupervisor();
        const auto fields =
            socket.isOpen() ? messages::split(exchange(socket.number(), messages::join(request)))
                            : QByteArrayList();
        if (!fields.isEmpty() && fields.first() == "ok") {
            return fields.mid(1);
        }
        if (!fields.isEmpty()) {
            *error = QString::fromUtf8(fields.value(1));
            return std::nullopt;
        }
        if (!socket.isOpen() && start == Start::No) {
            error->clear();
            return std::nullopt;
        }
        if (!socket.isOpen()) {
            *error = startSupervisor();
            if (!error->isNull()) {
                return std::nullopt;
            }
        }
        std::this_thread::sleep_for(retryPause);
    }
    *error = QStringLiteral("the supervisor does not answer");
    return std::nullopt;
}

QString SupervisorKeeper::load(const platform::LaunchJob &job)
{
    QString error;
    return ask({"load", job.file}, Start::Yes, &error) ? QString() : error;
}

QString SupervisorKeeper::unload(const QByteArray &label)
{
    QString error;
    if (ask({"unload", label}, Start::No, &error)) {
        return {};
    }
    return error.isEmpty() ? notLoaded(label) : error;
}

QString SupervisorKeeper::list(const QByteArray &label, QList<JobStatus> *jobs)
{
    QString error;
    const auto fields = ask({"list", label}, Start::No, &error);
    if (!fields) {
        return error.isEmpty() ? QString() : error;
    }
    for (auto at = 0; at + messages::fieldsOfJob <= fields->size(); at += messages::fieldsOfJob) {
        jobs->append({fields->at(at),
                      fields->at(at + 1).toLongLong(),
                      fields->at(at + 2).toInt(),
                      {{"File", fields->at(at + 3)},
                       {"State", fields->at(at + 4)},
                       {"Restarts", fields->at(at + 5)}}});
    }
    return {};
}
