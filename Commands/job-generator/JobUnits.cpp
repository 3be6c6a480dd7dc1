// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/job-generator/JobUnits.h"

#include "Commands/Jobs/LaunchUnit.h"
#include "Commands/Jobs/LaunchUnitPath.h"
#include "Platform/Core/Basics/Descriptor.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

struct CloseFolder {
    void operator()(DIR *folder) const { ::closedir(folder); }
};

void complain(const QString &text)
{
    // The manager's standard error is the journal; the number is the line's priority.
    const auto line = "<4>" + text.toUtf8() + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

QByteArrayList jobFiles(const QByteArray &folder)
{
    QByteArrayList files;
    const std::unique_ptr<DIR, CloseFolder> entries(::opendir(folder.constData()));
    while (entries != nullptr) {
        const auto *entry = ::readdir(entries.get()); // NOLINT(concurrency-mt-unsafe)
        if (entry == nullptr) {
            break;
        }
        const QByteArray name(entry->d_name);
        if (name.endsWith(".plist") && !name.startsWith('.')) {
            files << folder + '/' + name;
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool fail(const QByteArray &path, QString *error)
{
    *error = QStringLiteral("%1: %2").arg(
        platform::readableName(path),
        QString::fromLocal8Bit(std::strerror(errno))); // NOLINT(concurrency-mt-unsafe)
    return false;
}

bool writeAll(int file, const QByteArray &contents)
{
    for (qsizetype done = 0; done < contents.size();) {
        const auto count = ::write(file, contents.constData() + done,
                                   static_cast<std::size_t>(contents.size() - done));
        if (count < 0 && errno != EINTR) {
            return false;
        }
        done += std::max<ssize_t>(count, 0);
    }
    return true;
}

// The whole file or none.
bool writeFile(const QByteArray &path, const QByteArray &contents, QString *error)
{
    const QByteArray temporary = path + ".new";
    platform::Descriptor file(::open(temporary.constData(), // NOLINT(*-vararg)
                                     O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (file.isOpen() && writeAll(file.number(), contents) && ::close(file.release()) == 0 &&
        ::rename(temporary.constData(), path.constData()) == 0) {
        return true;
    }
    fail(path, error);
    ::unlink(temporary.constData());
    return false;
}

} // namespace

void JobUnits::addFolder(const QByteArray &jobFolder)
{
    const auto files = jobFiles(jobFolder);
    for (const auto &file : files) {
        addFile(file);
    }
}

void JobUnits::addFile(const QByteArray &jobFile)
{
    QString error;
    const auto job = platform::launchJobFromFile(jobFile, &error);
    if (!job) {
        complain(error);
        return;
    }
    if (job->isDisabled) {
        return;
    }
    if (m_labels.contains(job->label)) {
        complain(QStringLiteral("%1: the computer has a job of this label already")
                     .arg(platform::readableName(jobFile)));
        return;
    }
    const auto unit = platform::launchUnitName(job->label);
    const auto other = platform::unitOfAnotherOrigin(unit);
    error = platform::launchUnitObjection(*job);
    if (!other.isEmpty()) {
        error = QStringLiteral("%1: there is a unit of this name already, %2")
                    .arg(platform::readableName(jobFile), platform::readableName(other));
    }
    if (!error.isNull() || !write(*job, &error)) {
        complain(error);
        return;
    }
    m_labels.insert(job->label);
}

bool JobUnits::write(const platform::LaunchJob &job, QString *error) const
{
    const auto name = platform::launchUnitName(job.label);
    if (!writeFile(m_folder + '/' + name, platform::launchUnitFile(job), error)) {
        return false;
    }
    if (!job.startsAtLoad()) {
        return true;
    }
    // Not graphical-session.target: many desktops never reach it. default.target is part of every
    // start of the manager, that is of every first login.
    const QByteArray folder = m_folder + "/default.target.wants";
    const QByteArray link = folder + '/' + name;
    const QByteArray target = "../" + name;
    if (::mkdir(folder.constData(), 0755) != 0 && errno != EEXIST) {
        return fail(folder, error);
    }
    return ::symlink(target.constData(), link.constData()) == 0 || errno == EEXIST ||
           fail(link, error);
}
