// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/launchctl/SystemdKeeper.h"

#include "Commands/Jobs/LaunchSession.h"
#include "Commands/Jobs/LaunchUnit.h"

#include <QSet>

#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace {

using Mark = LoadedMarks::Mark;

// systemd's own exit statuses for what failed before the program ran.
constexpr auto statusNoFolder = 200;
constexpr auto statusNoProgram = 203;

// A unit that our generator has made.
bool isOurs(const UnitState &state)
{
    return !state.sourcePath.isEmpty() &&
           state.fragmentPath.startsWith(platform::sessionRuntimeFolder() + "/systemd/generator/");
}

// The unit's file may be gone while the program runs.
bool isOthers(const UnitState &state)
{
    return state.loadState != "not-found" && !isOurs(state);
}

QString othersUnit(const QByteArray &unit, const UnitState &state)
{
    return QStringLiteral("%1: this unit is not made from a job file, but from %2")
        .arg(platform::readableName(unit), state.fragmentPath.isEmpty()
                                               ? QString::fromUtf8(state.loadState)
                                               : platform::readableName(state.fragmentPath));
}

// How the last run ended, as a shell would count it, a signal as a negative number.
int lastStatus(const UnitState &state)
{
    return state.exitCode == CLD_EXITED ? state.exitStatus : -state.exitStatus;
}

QString howItEnded(const platform::LaunchJob &job, const UnitState &state)
{
    if (state.result == "exit-code" && state.exitStatus == statusNoProgram) {
        const auto reason = ::access(job.program.constData(), X_OK) == 0 ? ENOEXEC : errno;
        return QStringLiteral("%1 cannot be run: %2")
            .arg(platform::readableName(job.program), qt_error_string(reason));
    }
    if (state.result == "exit-code" && state.exitStatus == statusNoFolder) {
        const auto reason = ::access(job.workingDirectory.constData(), X_OK) == 0 ? ENOTDIR : errno;
        return QStringLiteral("%1 cannot be the working directory: %2")
            .arg(platform::readableName(job.workingDirectory), qt_error_string(reason));
    }
    if (state.result == "exit-code") {
        return QStringLiteral("the program ended with the status %1").arg(state.exitStatus);
    }
    if (state.result == "signal" || state.result == "core-dump") {
        return QStringLiteral("the program was ended by the signal %1").arg(state.exitStatus);
    }
    return QString::fromUtf8(state.result);
}

} // namespace

SystemdKeeper::SystemdKeeper(std::unique_ptr<UserManager> manager, const QByteArray &controlFolder)
    : m_manager(std::move(manager)), m_marks(controlFolder, m_manager->identity())
{
}

// Loaded is what runs, what has failed, what was loaded by hand, and what the manager has started
// at log-in; unless it was unloaded by hand since.
bool SystemdKeeper::isLoaded(const QByteArray &unit, const UnitState &state) const
{
    if (state.isActive() || state.activeState == "failed") {
        return true;
    }
    const auto mark = m_marks.of(unit);
    return state.loadState != "not-found" &&
           (mark == Mark::Loaded || (mark == Mark::None && state.startedAt != 0));
}

QString SystemdKeeper::load(const platform::LaunchJob &job)
{
    const auto unit = platform::launchUnitName(job.label);
    auto error = platform::launchUnitObjection(job);
    if (!error.isNull()) {
        return error;
    }
    const auto before = m_manager->unit(unit, &error);
    if (!before) {
        return error;
    }
    if (isOthers(*before)) {
        return othersUnit(unit, *before);
    }
    if (isLoaded(unit, *before)) {
        return alreadyLoaded(job.label);
    }
    error = m_manager->reload();
    const auto after = error.isNull() ? m_manager->unit(unit, &error) : std::nullopt;
    if (!after) {
        return error;
    }
    error = unitObjection(job, unit, *after);
    if (!error.isNull()) {
        return error;
    }
    m_marks.set(unit, Mark::Loaded);
    return job.startsAtLoad() ? startLoaded(job, unit) : QString();
}

// Why the manager's unit is not this job.
QString SystemdKeeper::unitObjection(const platform::LaunchJob &job, const QByteArray &unit,
                                     const UnitState &state)
{
    const auto file = platform::readableName(job.file);
    if (state.loadState == "not-found") {
        return QStringLiteral("%1: the service manager has made no unit from it; is the generator "
                              "\"ostrel-job-generator\" installed?")
            .arg(file);
    }
    if (isOthers(state)) {
        return othersUnit(unit, state);
    }
    if (state.loadState != "loaded") {
        return QStringLiteral("%1: %2").arg(file, m_manager->loadError(unit));
    }
    return state.sourcePath == job.file ? QString()
                                        : QStringLiteral("%1: the label belongs to the job of %2")
                                              .arg(file, platform::readableName(state.sourcePath));
}

QString SystemdKeeper::startLoaded(const platform::LaunchJob &job, const QByteArray &unit)
{
    auto error = m_manager->start(unit);
    if (error.isNull()) {
        return error;
    }
    QString ignored;
    const auto state = m_manager->unit(unit, &ignored);
    const auto how = state && state->result != "success" ? howItEnded(job, *state) : QString();
    return QStringLiteral("%1: loaded, but not started: %2%3")
        .arg(platform::readableName(job.label), error,
             how.isEmpty() ? how : QStringLiteral(": ") + how);
}

void SystemdKeeper::await(const platform::LaunchJob &job)
{
    QString ignored;
    const auto unit = platform::launchUnitName(job.label);
    const auto state = m_manager->unit(unit, &ignored);
    if (state && isOurs(*state) && !isLoaded(unit, *state) && m_marks.of(unit) == Mark::None) {
        m_marks.set(unit, Mark::Waiting);
    }
}

QString SystemdKeeper::startAwaited(const platform::LaunchJob &job)
{
    const auto unit = platform::launchUnitName(job.label);
    if (m_marks.of(unit) != Mark::Waiting) {
        return {};
    }
    m_marks.set(unit, Mark::Loaded);
    return startLoaded(job, unit);
}

QByteArrayList SystemdKeeper::environment()
{
    return m_manager->environment();
}

void SystemdKeeper::addToEnvironment(const QByteArrayList &variables)
{
    for (const auto &variable : variables) {
        m_manager->addToEnvironment(variable);
    }
}

QString SystemdKeeper::unload(const QByteArray &label)
{
    const auto unit = platform::launchUnitName(label);
    QString error;
    const auto state = m_manager->unit(unit, &error);
    if (!state) {
        return error;
    }
    if (isOthers(*state)) {
        return othersUnit(unit, *state);
    }
    if (!isLoaded(unit, *state) && m_marks.of(unit) != Mark::Waiting) {
        return notLoaded(label);
    }
    if (state->isActive()) {
        error = m_manager->stop(unit);
    }
    if (!error.isNull()) {
        return QStringLiteral("%1: %2").arg(platform::readableName(label), error);
    }
    m_manager->resetFailed(unit);
    if (::access(state->sourcePath.constData(), F_OK) == 0) {
        m_marks.set(unit, Mark::Unloaded); // the file is still there, and so is the unit
        return {};
    }
    m_marks.set(unit, Mark::None);
    return m_manager->reload();
}

QString SystemdKeeper::list(const QByteArray &label, QList<JobStatus> *jobs)
{
    QString error;
    QSet<QByteArray> units;
    if (label.isEmpty()) {
        const auto known = m_manager->unitNames("app-*.service", &error);
        if (!known) {
            return error;
        }
        const auto names = *known + m_marks.units();
        units = QSet<QByteArray>(names.begin(), names.end());
    } else {
        units.insert(platform::launchUnitName(label));
    }
    for (const auto &unit : std::as_const(units)) {
        const auto itsLabel = platform::launchUnitLabel(unit);
        const auto state = itsLabel.isEmpty() ? std::nullopt : m_manager->unit(unit, &error);
        if (!error.isNull()) {
            return error;
        }
        const auto isWaiting =
            state && !isLoaded(unit, *state) && m_marks.of(unit) == Mark::Waiting;
        if (!state || isOthers(*state) || (!isLoaded(unit, *state) && !isWaiting)) {
            continue;
        }
        jobs->append({itsLabel,
                      state->mainPid,
                      lastStatus(*state),
                      {{"File", state->sourcePath},
                       {"Unit", unit},
                       {"State", isWaiting ? "waiting for the graphical session"
                                           : state->activeState + " (" + state->subState + ')'},
                       {"Restarts", QByteArray::number(state->restarts)}}});
    }
    return {};
}
