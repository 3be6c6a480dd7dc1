// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/job-supervisor/Supervisor.h"

#include "Commands/Jobs/Messages.h"

#include <sys/inotify.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>

namespace {

constexpr std::chrono::seconds firstRequestTimeout{10};
constexpr auto maxClients = 64U;
constexpr auto ownDescriptors = 3U; // that stand before the clients' when waiting

unsigned long fileNumber(const QByteArray &path)
{
    struct stat status {};
    return ::lstat(path.constData(), &status) == 0 ? status.st_ino : 0;
}

bool isOwnUser(int socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == ::geteuid();
}

QByteArrayList failure(const QByteArray &label, const QString &text)
{
    return {"error", (platform::readableName(label) + QStringLiteral(": ") + text).toUtf8()};
}

} // namespace

Supervisor::Supervisor(Descriptors descriptors, QByteArray socketPath)
    : m_descriptors(std::move(descriptors)), m_socketPath(std::move(socketPath)),
      m_socketNumber(fileNumber(m_socketPath))
{
}

void Supervisor::run()
{
    while (!isOver()) {
        serve(wait());
        for (auto &[label, job] : m_jobs) {
            job->runDueAction();
        }
        removeEndedJobs();
    }
    if (isSocketThere()) {
        ::unlink(m_socketPath.constData());
    }
}

bool Supervisor::isSocketThere() const
{
    return m_socketNumber != 0 && fileNumber(m_socketPath) == m_socketNumber;
}

// A request that has not been read yet is refused by the closing of the socket, and made again.
bool Supervisor::isOver() const
{
    const auto mayEnd = m_ending || m_served || Clock::now() > m_started + firstRequestTimeout;
    return m_jobs.empty() && m_clients.empty() && mayEnd;
}

int Supervisor::millisecondsToNext() const
{
    auto next = Clock::time_point::max();
    for (const auto &[label, job] : m_jobs) {
        next = std::min(next, job->due().value_or(next));
    }
    for (const auto &client : m_clients) {
        next = std::min(next, client.deadline());
    }
    if (m_jobs.empty()) {
        next = std::min(next, m_started + firstRequestTimeout);
    }
    if (next == Clock::time_point::max()) {
        return -1;
    }
    // Rounded up, so that it is due indeed.
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count() + 1;
    return static_cast<int>(std::clamp<qint64>(left, 0, 3600000));
}

std::vector<pollfd> Supervisor::wait()
{
    // Who comes while too many are served waits in the queue.
    const auto accepts = m_clients.size() < maxClients && !m_ending;
    std::vector<pollfd> events{{accepts ? m_descriptors.socket.fd() : -1, POLLIN, 0},
                               {m_descriptors.signalsArrived.fd(), POLLIN, 0},
                               {m_descriptors.folderChanged.fd(), POLLIN, 0}};
    for (const auto &client : m_clients) {
        const auto wanted = client.isReading() ? POLLIN : client.isWriting() ? POLLOUT : 0;
        events.push_back({client.descriptor(), static_cast<short>(wanted), 0});
    }
    ::poll(events.data(), events.size(), millisecondsToNext());
    return events;
}

void Supervisor::serve(const std::vector<pollfd> &events)
{
    auto event = events.begin() + ownDescriptors;
    for (auto &client : m_clients) {
        const auto happened = (event++)->revents;
        if (happened != 0 && client.isReading()) {
            if (const auto request = client.read()) {
                handle(client, *request);
            }
        } else if (happened != 0 && client.isWriting()) {
            client.write();
        } else if ((happened & (POLLERR | POLLHUP)) != 0 || Clock::now() > client.deadline()) {
            client.close();
        }
    }
    readSignals();
    if (events.at(2).revents != 0) {
        std::array<char, 4096> changes{};
        while (::read(m_descriptors.folderChanged.fd(), changes.data(), changes.size()) > 0) {
        }
        if (!isSocketThere()) {
            endAll(); // the session is over, or nobody would ever reach us again
        }
    }
    if (events.at(0).revents != 0) {
        acceptClients();
    }
}

void Supervisor::readSignals()
{
    signalfd_siginfo signal{};
    while (::read(m_descriptors.signalsArrived.fd(), &signal, sizeof signal) == sizeof signal) {
        if (signal.ssi_signo != SIGCHLD) {
            endAll();
        }
    }
    reap();
}

void Supervisor::reap()
{
    siginfo_t child{};
    while (::waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == 0 && child.si_pid != 0) {
        const auto pid = child.si_pid;
        const auto found = std::find_if(m_jobs.begin(), m_jobs.end(),
                                        [&](const auto &job) { return job.second->pid() == pid; });
        if (found != m_jobs.end()) {
            // Before its number can be another's: what it has left behind in its group.
            ::kill(-pid, SIGKILL);
        }
        auto status = 0;
        ::waitpid(pid, &status, 0);
        if (found != m_jobs.end()) {
            found->second->ended(status);
        }
        child = {};
    }
}

void Supervisor::acceptClients()
{
    while (m_clients.size() < maxClients) {
        platform::Descriptor socket(
            ::accept4(m_descriptors.socket.fd(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!socket.isOpen()) {
            return;
        }
        if (isOwnUser(socket.fd())) {
            m_clients.emplace_back(std::move(socket));
        }
    }
}

// Forgets the jobs that have ended for good and answers the clients that waited for that.
void Supervisor::removeEndedJobs()
{
    for (auto job = m_jobs.begin(); job != m_jobs.end();) {
        if (!job->second->isOver()) {
            ++job;
            continue;
        }
        for (auto &client : m_clients) {
            if (client.awaitedLabel() == job->first) {
                client.answer({"ok"});
            }
        }
        job = m_jobs.erase(job);
    }
    m_clients.remove_if([](const Client &client) { return client.isOver(); });
}

void Supervisor::endAll()
{
    m_ending = true;
    for (auto &[label, job] : m_jobs) {
        job->stop();
    }
}

void Supervisor::handle(Client &client, const QByteArrayList &request)
{
    const auto word = request.value(0);
    const auto argument = request.value(1);
    m_served = true;
    const auto display = platform::displayVariablesIn(request.mid(2));
    if (request.size() != 2 + display.size() || (word != "load" && !display.isEmpty())) {
        client.answer(failure("supervisor", QStringLiteral("no request")));
    } else if (word == "load") {
        for (const auto &variable : display) {
            const auto end = variable.indexOf('=');
            qputenv(variable.left(end).constData(), variable.mid(end + 1));
        }
        load(client, argument);
    } else if (word == "unload") {
        unload(client, argument);
    } else if (word == "list") {
        client.answer(list(argument));
    } else {
        client.answer(failure("supervisor", QStringLiteral("no such request")));
    }
}

void Supervisor::load(Client &client, const QByteArray &file)
{
    QString error;
    auto job = platform::launchJobFromFile(file, &error);
    if (!job) {
        client.answer({"error", error.toUtf8()});
        return;
    }
    const auto label = job->label;
    if (m_ending) {
        client.answer(failure(label, QStringLiteral("the supervisor is ending")));
        return;
    }
    if (m_jobs.contains(label)) {
        client.answer(failure(label, m_jobs.at(label)->isStopping()
                                         ? QStringLiteral("still ending")
                                         : QStringLiteral("already loaded")));
        return;
    }
    auto &loaded = m_jobs[label];
    loaded = std::make_unique<SupervisedJob>(*job);
    error = job->startsAtLoad() ? loaded->start() : QString();
    client.answer(error.isNull()
                      ? QByteArrayList{"ok"}
                      : failure(label, QStringLiteral("loaded, but not started: %1").arg(error)));
}

void Supervisor::unload(Client &client, const QByteArray &label)
{
    const auto found = m_jobs.find(label);
    if (found == m_jobs.end()) {
        client.answer(failure(label, QStringLiteral("not loaded")));
        return;
    }
    client.waitFor(label);
    found->second->stop();
}

QByteArrayList Supervisor::list(const QByteArray &label) const
{
    QByteArrayList fields{"ok"};
    for (const auto &[name, job] : m_jobs) {
        if (label.isEmpty() || label == name) {
            fields << name << QByteArray::number(job->pid())
                   << QByteArray::number(job->lastStatus()) << job->job().file << job->state()
                   << QByteArray::number(job->restarts());
        }
    }
    return fields;
}
