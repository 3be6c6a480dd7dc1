// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/job-supervisor/ProgramStart.h"

#include "Platform/Core/Basics/DescriptorPair.h"
#include "Platform/Core/Processes/SpawnProgram.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace {

// systemd's exit statuses for what fails before a program runs.
enum Stage : int {
    StageFolder = 200,
    StageNice = 201,
    StageProgram = 203,
    StageInput = 208,
    StageOutput = 209,
    StageError = 222,
};

struct Failure {
    int stage = 0;
    int number = 0;
};

// Ours, with what the job sets.
QByteArrayList environmentOf(const platform::LaunchJob &job)
{
    auto result = job.environment;
    for (auto **variable = environ; *variable != nullptr; ++variable) { // NOLINT(*-arithmetic)
        const QByteArray text(*variable);
        const QByteArray name = text.left(text.indexOf('=') + 1);
        if (std::none_of(
                job.environment.begin(), job.environment.end(),
                [&](const QByteArray &own) { return !name.isEmpty() && own.startsWith(name); })) {
            result << text;
        }
    }
    return result;
}

// What happens in the new process. Allocates nothing.
class Child {
public:
    Child(const platform::LaunchJob &job, int report) : m_job(job), m_report(report) {}

    [[noreturn]] void run(char *const *arguments, char *const *environment) const
    {
        ::setsid();
        resetSignals();
        if (m_job.nice && ::setpriority(PRIO_PROCESS, 0, *m_job.nice) != 0) {
            fail(StageNice);
        }
        if (m_job.isBackground) {
            const sched_param parameters{};
            ::sched_setscheduler(0, SCHED_BATCH, &parameters);
            constexpr auto idleClass = 3 << 13;         // IOPRIO_CLASS_IDLE
            ::syscall(SYS_ioprio_set, 1, 0, idleClass); // NOLINT(*-vararg)
        }
        ::umask(m_job.umask.value_or(S_IWGRP | S_IWOTH));
        constexpr auto append = O_WRONLY | O_APPEND | O_CREAT;
        redirect(STDIN_FILENO, m_job.standardInPath, O_RDONLY, StageInput);
        redirect(STDOUT_FILENO, m_job.standardOutPath, append, StageOutput);
        redirect(STDERR_FILENO, m_job.standardErrorPath, append, StageError);
        if (::chdir(m_job.workingDirectory.constData()) != 0) {
            fail(StageFolder);
        }
        ::execve(m_job.program.constData(), arguments, environment);
        fail(StageProgram);
    }

    [[noreturn]] void refuse() const
    {
        errno = EPERM;
        fail(StageProgram);
    }

private:
    [[noreturn]] void fail(Stage stage) const
    {
        const Failure failure{stage, errno};
        [[maybe_unused]] const auto written = ::write(m_report, &failure, sizeof failure);
        ::_exit(stage);
    }

    static void resetSignals()
    {
        struct sigaction standard {};
        standard.sa_handler = SIG_DFL; // NOLINT(*-union-access)
        for (auto signal = 1; signal < NSIG; ++signal) {
            ::sigaction(signal, &standard, nullptr);
        }
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
    }

    // A pipe that nobody reads must not hold the start up: O_NONBLOCK, but for the opening only.
    void redirect(int stream, const QByteArray &path, int flags, Stage stage) const
    {
        if (path.isEmpty()) {
            return; // the supervisor's own are "/dev/null"
        }
        const auto file =
            ::open(path.constData(), flags | O_NONBLOCK | O_NOCTTY, 0666); // NOLINT(*-vararg)
        if (file < 0 || ::dup2(file, stream) < 0) {
            fail(stage);
        }
        ::fcntl(stream, F_SETFL, flags & O_APPEND); // NOLINT(*-vararg)
        if (file != stream) {
            ::close(file);
        }
    }

    const platform::LaunchJob &m_job;
    int m_report;
};

QString words(const platform::LaunchJob &job, const Failure &failure)
{
    const auto reason =
        QString::fromLocal8Bit(std::strerror(failure.number)); // NOLINT(concurrency-mt-unsafe)
    const auto of = [&](const QString &text, const QByteArray &path) {
        return text.arg(platform::readableName(path), reason);
    };
    switch (failure.stage) {
    case StageFolder:
        return of(QStringLiteral("%1 cannot be the working directory: %2"), job.workingDirectory);
    case StageInput:
        return of(QStringLiteral("%1 cannot be opened: %2"), job.standardInPath);
    case StageOutput:
        return of(QStringLiteral("%1 cannot be opened: %2"), job.standardOutPath);
    case StageError:
        return of(QStringLiteral("%1 cannot be opened: %2"), job.standardErrorPath);
    case StageNice:
        return QStringLiteral("the program's priority cannot be set: %1").arg(reason);
    default:
        return of(QStringLiteral("%1 cannot be run: %2"), job.program);
    }
}

} // namespace

StartedProgram startProgram(const platform::LaunchJob &job)
{
    // By path afterwards, so that the program keeps its name; who could change the path meanwhile
    // is root or this user.
    const auto objection = platform::launchProgramObjection(job);
    auto arguments = job.arguments;
    auto environment = environmentOf(job);
    const auto argumentPointers = platform::textPointers(arguments);
    const auto environmentPointers = platform::textPointers(environment);
    auto report = platform::openPipe();
    const auto parent = ::getpid();
    pid_t pid = -1;
    if (report) {
        pid = ::fork();
    }
    const auto reason = errno;
    if (pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM); // NOLINT(*-vararg)
        if (::getppid() != parent) {
            ::_exit(StageProgram);
        }
        const Child child(job, report->second.fd());
        if (!objection.isNull()) {
            child.refuse();
        }
        child.run(argumentPointers.data(), environmentPointers.data());
    }
    if (pid < 0) {
        return {0, words(job, {StageProgram, reason})};
    }
    // The pipe closes when the program runs.
    report->second.close();
    Failure failure;
    ssize_t size = 0;
    do {
        size = ::read(report->first.fd(), &failure, sizeof failure);
    } while (size < 0 && errno == EINTR);
    if (size != sizeof failure) {
        return {pid, {}};
    }
    return {pid, objection.isNull() ? words(job, failure) : objection};
}
