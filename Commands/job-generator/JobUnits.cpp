// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/job-generator/JobUnits.h"

#include "Commands/Jobs/LaunchUnit.h"
#include "Commands/Jobs/LaunchUnitPath.h"
#include "Platform/Core/Basics/SystemCommand.h"
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Text/FileName.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace {

void complain(const QString &text)
{
    // The manager's standard error is the journal; the number is the line's priority.
    const auto line = "<4>" + text.toUtf8() + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

void complainOf(const QByteArray &path)
{
    complain(QStringLiteral("%1: %2").arg(platform::readableName(path), qt_error_string(errno)));
}

} // namespace

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
        complain(QStringLiteral("%1: there already is a system-wide job with this label")
                     .arg(platform::readableName(jobFile)));
        return;
    }
    const auto unit = platform::launchUnitName(job->label);
    const auto other = platform::unitOfAnotherOrigin(unit);
    error = platform::launchUnitObjection(*job);
    if (!other.isEmpty()) {
        error = QStringLiteral("%1: there already is a unit with this name, %2")
                    .arg(platform::readableName(jobFile), platform::readableName(other));
    }
    if (!error.isNull() || !write(*job, &error)) {
        complain(error);
        return;
    }
    m_labels.insert(job->label);
}

bool JobUnits::write(const platform::LaunchJob &job, QString *error)
{
    const auto name = platform::launchUnitName(job.label);
    const QByteArray path = m_folder + '/' + name;
    if (!platform::replaceFile(platform::fileNameFromBytes(path), platform::launchUnitFile(job),
                               error)) {
        *error = QStringLiteral("%1: %2").arg(platform::readableName(path), *error);
        return false;
    }
    m_startsAtLogIn = m_startsAtLogIn || job.startsAtLoad();
    return true;
}

void JobUnits::addLogIn()
{
    if (!m_startsAtLogIn) {
        return;
    }
    const QByteArray path = m_folder + '/' + platform::logInUnitName;
    const auto command = platform::fileNameBytes(platform::privateCommandFolder()) + "/launchctl";
    QString error;
    if (!platform::replaceFile(platform::fileNameFromBytes(path), platform::logInUnitFile(command),
                               &error)) {
        complain(QStringLiteral("%1: %2").arg(platform::readableName(path), error));
        return;
    }
    // Not graphical-session.target: many desktops never reach it. default.target is part of every
    // start of the manager, that is of every first login.
    const QByteArray folder = m_folder + "/default.target.wants";
    const QByteArray link = folder + '/' + platform::logInUnitName;
    const QByteArray target = QByteArray("../") + platform::logInUnitName;
    if (::mkdir(folder.constData(), 0755) != 0 && errno != EEXIST) {
        complainOf(folder);
    } else if (::symlink(target.constData(), link.constData()) != 0 && errno != EEXIST) {
        complainOf(link);
    }
}
