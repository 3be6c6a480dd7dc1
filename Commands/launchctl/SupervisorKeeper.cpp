// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/launchctl/SupervisorKeeper.h"

#include "Commands/Jobs/LaunchSession.h"
#include "Commands/Jobs/Messages.h"
#include "Platform/Core/Authorization/ToolRequest.h"
#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Basics/SystemCommand.h"
#include "Platform/Core/Processes/ChildProcess.h"

#include <thread>

namespace {

constexpr std::chrono::milliseconds retryPause{20};

// An open descriptor where a supervisor listens. The current folder becomes the socket's.
platform::Descriptor connectToSupervisor()
{
    const auto folder = platform::jobControlFolder();
    const auto address = messages::socketAddress();
    const auto *generic =
        reinterpret_cast<const sockaddr *>(&address); // NOLINT(*-reinterpret-cast)
    platform::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (folder.isEmpty() || ::chdir(folder.constData()) != 0 ||
        ::connect(socket.fd(), generic, sizeof address) != 0) {
        socket.close();
    }
    return socket;
}

// Null when one runs afterwards, be it this one or another's.
QString startSupervisor()
{
    platform::ChildProcess supervisor;
    supervisor.setLaunchPath(platform::privateCommandFolder() + QStringLiteral("/job-supervisor"));
    try {
        supervisor.launch();
        supervisor.waitUntilExit();
    } catch (const platform::Exception &exception) {
        return QStringLiteral("%1 cannot be run: %2")
            .arg(supervisor.launchPath(), exception.reason());
    }
    return supervisor.terminationStatus() == 0
               ? QString()
               : QStringLiteral("the supervisor could not be started");
}

// Empty where no whole answer came.
QByteArray exchange(int socket, const QByteArray &request, const QDeadlineTimer &deadline)
{
    // A request is short enough to be taken at once.
    if (::send(socket, request.constData(), static_cast<std::size_t>(request.size()),
               MSG_NOSIGNAL) != request.size() ||
        ::shutdown(socket, SHUT_WR) != 0) {
        return {};
    }
    QByteArray answer;
    std::array<char, 4096> buffer{};
    while (platform::becomesReadable(socket, std::chrono::milliseconds(deadline.remainingTime()))) {
        const auto size = ::recv(socket, buffer.data(), buffer.size(), 0);
        if (size <= 0) {
            return answer.endsWith('\0') ? answer : QByteArray();
        }
        answer.append(buffer.data(), static_cast<int>(size));
    }
    return {};
}

} // namespace

std::optional<QByteArrayList> SupervisorKeeper::ask(const QByteArrayList &request, Start start,
                                                    QString *error)
{
    // One that is about to end hangs up without an answer; then the next is asked.
    while (!m_deadline.hasExpired()) {
        const auto socket = connectToSupervisor();
        const auto fields =
            socket.isOpen()
                ? messages::split(exchange(socket.fd(), messages::join(request), m_deadline))
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
    return ask(QByteArrayList{"load", job.file} + platform::displayVariablesIn(environment()),
               Start::Yes, &error)
               ? QString()
               : error;
}

QString SupervisorKeeper::startAwaited(const platform::LaunchJob &job)
{
    const auto error = load(job);
    return error == alreadyLoaded(job.label) ? QString() : error;
}

// A supervisor has that of who started it, with the display's variables of who loads a job.
QByteArrayList SupervisorKeeper::environment()
{
    QByteArrayList variables;
    for (auto **variable = environ; *variable != nullptr; ++variable) { // NOLINT(*-arithmetic)
        variables << QByteArray(*variable);
    }
    return variables;
}

void SupervisorKeeper::addToEnvironment(const QByteArrayList &variables)
{
    for (const auto &variable : variables) {
        const auto end = variable.indexOf('=');
        qputenv(variable.left(end).constData(), variable.mid(end + 1));
    }
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
