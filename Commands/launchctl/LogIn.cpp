// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/Jobs/LaunchSession.h"
#include "Commands/launchctl/Commands.h"
#include "Commands/launchctl/GraphicalSession.h"

#include <QSet>

#include <systemd/sd-daemon.h>

#include <vector>

namespace {

constexpr auto lookPause = 1000; // milliseconds
// So often a desktop is waited for to export its environment, before programs are looked at.
constexpr auto looksForExport = 5;

// The jobs that are to run at log-in. What is wrong with others is told by who makes the units, and
// when they are loaded.
std::vector<platform::LaunchJob> jobsOfLogIn()
{
    std::vector<platform::LaunchJob> jobs;
    QSet<QByteArray> labels;
    for (const auto &file : platform::launchJobFiles()) {
        QString ignored;
        const auto job = platform::launchJobFromFile(file, &ignored);
        if (!job || job->isDisabled || labels.contains(job->label)) {
            continue;
        }
        labels.insert(job->label);
        if (job->startsAtLoad()) {
            jobs.push_back(*job);
        }
    }
    return jobs;
}

} // namespace

bool Commands::bringDisplay(const GraphicalSession &session, FromPrograms fromPrograms)
{
    if (keeper() == nullptr) {
        return false;
    }
    if (session.hasDisplayIn(keeper()->environment())) {
        return true;
    }
    const auto variables =
        fromPrograms == FromPrograms::Yes ? session.displayOfPrograms() : QByteArrayList();
    keeper()->addToEnvironment(variables);
    return !variables.isEmpty();
}

// The service manager is asked anew each time: years may lie between two looks.
void Commands::awaitDisplay(const SessionMonitor &monitor)
{
    for (auto looks = 0;;) {
        const auto session = GraphicalSession::current();
        looks = session ? looks + 1 : 0;
        forgetKeeper();
        if (session &&
            bringDisplay(*session, looks > looksForExport ? FromPrograms::Yes : FromPrograms::No)) {
            return;
        }
        monitor.wait(session ? lookPause : -1);
    }
}

int Commands::logIn()
{
    const auto jobs = jobsOfLogIn();
    if (jobs.empty()) {
        return 0;
    }
    const SessionMonitor monitor; // tells of all that happens from the first look on
    if (keeper() == nullptr) {
        return complain(m_keeperError);
    }
    if (!monitor.isOpen() && platform::displayVariablesIn(keeper()->environment()).isEmpty()) {
        return complain(QStringLiteral("there is no logind to tell of the graphical session"));
    }
    for (const auto &job : jobs) {
        keeper()->await(job);
    }
    ::sd_notify(0, "READY=1\nSTATUS=Waiting for the graphical session");
    if (monitor.isOpen()) {
        awaitDisplay(monitor);
    }
    auto status = 0;
    for (const auto &job : jobs) {
        forgetKeeper();
        const auto error = keeper() != nullptr ? keeper()->startAwaited(job) : m_keeperError;
        status = error.isNull() ? status : complain(error);
    }
    return status;
}
