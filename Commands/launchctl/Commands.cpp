// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/launchctl/Commands.h"

#include "Commands/Jobs/LaunchSession.h"
#include "Commands/launchctl/GraphicalSession.h"
#include "Commands/launchctl/SupervisorKeeper.h"
#include "Commands/launchctl/SystemdKeeper.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

struct Free {
    void operator()(char *text) const { std::free(text); } // NOLINT(*-no-malloc,*-owning-memory)
};

// Without links, dots and doubled slashes; empty where there is nothing.
QByteArray realPath(const QByteArray &path)
{
    const std::unique_ptr<char, Free> real(::realpath(path.constData(), nullptr));
    return real != nullptr ? QByteArray(real.get()) : QByteArray();
}

QByteArray absolutePath(const QByteArray &path)
{
    const std::unique_ptr<char, Free> folder(::getcwd(nullptr, 0));
    return path.startsWith('/') || folder == nullptr ? path : QByteArray(folder.get()) + '/' + path;
}

void print(const QByteArray &text)
{
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
}

// The file as the session knows it: in one of the folders of jobs, spelled as that is. Null where
// it is in none.
QByteArray pathInJobFolder(const QByteArray &file)
{
    const auto slash = file.lastIndexOf('/');
    const auto folder = realPath(file.left(std::max<int>(static_cast<int>(slash), 1)));
    const auto known = platform::launchAgentFolders();
    const auto found = std::find_if(known.begin(), known.end(), [&](const QByteArray &candidate) {
        return !folder.isEmpty() && realPath(candidate) == folder;
    });
    return found != known.end() ? *found + file.mid(slash) : QByteArray();
}

} // namespace

int Commands::complain(const QString &text)
{
    const QByteArray line = "launchctl: " + text.toUtf8() + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
    return 1;
}

void Commands::forgetKeeper()
{
    m_keeper.reset();
    m_keeperError = QString();
    m_deadline = QDeadlineTimer(m_timeout);
}

JobKeeper *Commands::keeper()
{
    if (m_keeper == nullptr && m_keeperError.isNull()) {
        auto manager =
            UserManager::connect(m_deadline.deadline<std::chrono::steady_clock>(), &m_keeperError);
        const auto folder = manager != nullptr ? platform::jobControlFolder() : QByteArray();
        if (!folder.isEmpty()) {
            m_keeper = std::make_unique<SystemdKeeper>(std::move(manager), folder);
        } else if (manager != nullptr) {
            m_keeperError =
                QStringLiteral("%1/ostrel: this must be a folder of your own that nobody "
                               "else can enter")
                    .arg(platform::readableName(platform::sessionRuntimeFolder()));
        } else if (m_keeperError.isNull()) {
            m_keeper = std::make_unique<SupervisorKeeper>(m_deadline);
        }
    }
    return m_keeper.get();
}

QString Commands::loadFile(const QByteArray &file)
{
    const auto path = pathInJobFolder(file);
    if (path.isEmpty()) {
        return QStringLiteral("%1: only job files in %2 can be loaded")
            .arg(platform::readableName(file),
                 platform::readableName(platform::launchAgentFolders().join(" and ")));
    }
    QString error;
    const auto job = platform::launchJobFromFile(path, &error);
    if (!job) {
        return error;
    }
    if (job->isDisabled) {
        return QStringLiteral("%1: the job is disabled").arg(platform::readableName(path));
    }
    if (const auto session = GraphicalSession::current()) {
        bringDisplay(*session, FromPrograms::Yes);
    }
    return keeper() != nullptr ? keeper()->load(*job) : m_keeperError;
}

QString Commands::unloadFile(const QByteArray &file)
{
    // The file's name is its job's label; the file itself may be damaged or gone.
    const auto label = platform::launchLabelOfFile(file);
    return label.isEmpty()
               ? QStringLiteral("%1: not the name of a job file").arg(platform::readableName(file))
               : unloadLabel(label);
}

QString Commands::unloadLabel(const QByteArray &label)
{
    return keeper() != nullptr ? keeper()->unload(label) : m_keeperError;
}

int Commands::load(const QByteArrayList &files)
{
    QByteArrayList paths;
    std::transform(files.begin(), files.end(), std::back_inserter(paths), absolutePath);
    auto status = 0;
    for (const auto &path : std::as_const(paths)) {
        const auto error = loadFile(path);
        status = error.isNull() ? status : complain(error);
    }
    return status;
}

int Commands::unload(const QByteArrayList &files)
{
    auto status = 0;
    for (const auto &file : files) {
        const auto error = unloadFile(file);
        status = error.isNull() ? status : complain(error);
    }
    return status;
}

int Commands::remove(const QByteArray &label)
{
    const auto objection = platform::launchLabelObjection(label);
    const auto error =
        objection.isNull() ? unloadLabel(label) : QStringLiteral("the label %1").arg(objection);
    return error.isNull() ? 0 : complain(error);
}

int Commands::list(const QByteArray &label)
{
    QList<JobStatus> jobs;
    const auto error = keeper() != nullptr ? keeper()->list(label, &jobs) : m_keeperError;
    if (!error.isNull()) {
        return complain(error);
    }
    std::sort(jobs.begin(), jobs.end(),
              [](const JobStatus &one, const JobStatus &other) { return one.label < other.label; });
    const auto process = [](const JobStatus &job) {
        return job.pid != 0 ? QByteArray::number(job.pid) : QByteArray("-");
    };
    if (label.isEmpty()) {
        print("PID\tStatus\tLabel\n");
        for (const auto &job : std::as_const(jobs)) {
            print(process(job) + '\t' + QByteArray::number(job.lastStatus) + '\t' + job.label +
                  '\n');
        }
        return 0;
    }
    if (jobs.isEmpty()) {
        return complain(notLoaded(label));
    }
    const auto &job = jobs.first();
    print("Label = " + job.label + "\nPID = " + process(job) +
          "\nStatus = " + QByteArray::number(job.lastStatus) + '\n');
    for (const auto &[key, value] : job.details) {
        print(key + " = " + value + '\n');
    }
    return 0;
}
