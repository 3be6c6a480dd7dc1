// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayList>
#include <QString>

#include <sys/stat.h>

#include <chrono>
#include <optional>

// Job files: property lists, "Label.plist", that say what the service manager runs for a user.
// Documentation/ServiceManager.md has the keys. Everything here is in bytes, as the system has it.
namespace platform {

struct LaunchJob {
    // What happens when the program has ended. Success is the exit status 0 and nothing else.
    enum class KeepAlive { Never, Always, AfterFailure, AfterSuccess };

    QByteArray file; // absolute path of the job file
    QByteArray label;
    QByteArray program;       // absolute
    QByteArrayList arguments; // at least one: the name that the program sees as its own
    QByteArray workingDirectory = "/";
    QByteArrayList environment; // "NAME=value", to be added to the session's
    QByteArray standardInPath;  // these three empty where not given
    QByteArray standardOutPath;
    QByteArray standardErrorPath;
    std::optional<int> nice;
    std::optional<mode_t> umask;
    std::chrono::seconds throttleInterval{10};
    KeepAlive keepAlive = KeepAlive::Never;
    bool runAtLoad = false;
    bool isDisabled = false;
    bool isBackground = false; // gives way to all other programs

    // A job that is kept alive has to run once before it can end.
    bool startsAtLoad() const { return runAtLoad || keepAlive != KeepAlive::Never; }
};

// Bytes of the largest job file that is read.
constexpr qint64 maximumLaunchJobSize = qint64(128) * 1024;

// The job that the bytes describe. Nothing, with file and key in error, for a job that cannot be
// run exactly as it is described.
std::optional<LaunchJob> launchJobFromData(const QByteArray &data, const QByteArray &file,
                                           QString *error);

// The job in a file that this user's manager may take on. Only a regular file of this user's own or
// of root's that nobody else can write to is read. Of a computer's job, and for root's manager of
// every job, file and program, with all folders and links on the way, must be theirs alone, too.
std::optional<LaunchJob> launchJobFromFile(const QByteArray &file, QString *error);

// Why this user's manager must not run the job's program; null where it may. To be asked again
// before each start where that can be done.
QString launchProgramObjection(const LaunchJob &job);

// The label that the file's name gives; empty where the name does not end in ".plist" or gives a
// label that cannot be one.
QByteArray launchLabelOfFile(const QByteArray &file);

// Why the label is not valid; null for a valid one.
QString launchLabelObjection(const QByteArray &label);

// Why a file of this status must not say what the user's programs are; null where it may.
QString launchFileObjection(const struct stat &status, uid_t user);

// For messages: control characters and bytes that are not UTF-8 are replaced.
QString readableName(const QByteArray &bytes);

bool isUtf8Name(const QByteArray &bytes);

// Whether it holds one of the 66 code points that are no characters, which systemd takes for bytes
// that are not UTF-8.
bool holdsNoncharacter(const QByteArray &bytes);

} // namespace platform
