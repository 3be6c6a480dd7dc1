// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/Jobs/LaunchUnit.h"

#include <algorithm>
#include <array>

namespace platform {
namespace {

const QByteArray unitPrefix("app-");
const QByteArray unitSuffix(".service");

bool isControl(char byte)
{
    return static_cast<uchar>(byte) < 0x20 || byte == 0x7F;
}

QByteArray hexEscape(char byte)
{
    return "\\x" + QByteArray(1, byte).toHex();
}

// Doubles the percent signs, with which systemd's specifiers begin.
QByteArray withoutSpecifiers(QByteArray text)
{
    return text.replace('%', "%%");
}

// One word of a command line or of a list, which is UTF-8.
QByteArray quoted(const QByteArray &word)
{
    QByteArray result("\"");
    for (const char byte : word) {
        if (byte == '"' || byte == '\\') {
            result += '\\';
            result += byte;
        } else {
            result += isControl(byte) ? hexEscape(byte) : QByteArray(1, byte);
        }
    }
    return withoutSpecifiers(result + '"');
}

// Whether a setting that is one path, without quotes and escapes, can hold this one.
bool canStandPlain(const QByteArray &path)
{
    return isUtf8Name(path) && !holdsNoncharacter(path) &&
           std::none_of(path.begin(), path.end(), isControl) && !path.endsWith('\\') &&
           !path.endsWith(' ') && !(path + '/').contains("/../");
}

// systemd itself runs no program whose name has quotes.
bool canBeRunPlain(const QByteArray &program)
{
    return canStandPlain(program) && std::none_of(program.begin(), program.end(), [](char byte) {
               return byte == '"' || byte == '\'' || byte == '\\';
           });
}

QByteArray fileUri(const QByteArray &path)
{
    return "file://" + path.toPercentEncoding("/");
}

// The colon keeps "$" as it is. After the at sign, the first argument is the program's own name.
QByteArray commandLine(const LaunchJob &job)
{
    auto words = canBeRunPlain(job.program)
                     ? QByteArrayList{"@:" + job.program} + job.arguments
                     : QByteArrayList{":/bin/sh", "-c", "exec \"$@\"", "sh", job.program} +
                           job.arguments.mid(1);
    std::transform(words.begin(), words.end(), words.begin(), quoted);
    return words.join(' ');
}

// The settings that name one path each.
std::array<std::pair<QByteArray, QByteArray>, 4> pathSettings(const LaunchJob &job)
{
    return {{{"WorkingDirectory=", job.workingDirectory},
             {"StandardInput=file:", job.standardInPath},
             {"StandardOutput=append:", job.standardOutPath},
             {"StandardError=append:", job.standardErrorPath}}};
}

// systemd counts the end by one of these signals as a success; a job's success is the exit status
// 0.
const QByteArray signalsOfSuccess("SIGHUP SIGINT SIGTERM SIGPIPE");

// systemd cannot make the pause depend on how long the program ran, so it is the whole interval.
QByteArray restartLines(const LaunchJob &job)
{
    const QByteArray pause =
        "RestartSec=" + QByteArray::number(qlonglong(job.throttleInterval.count())) + '\n';
    switch (job.keepAlive) {
    case LaunchJob::KeepAlive::Never:
        break;
    case LaunchJob::KeepAlive::Always:
        return "Restart=always\n" + pause;
    case LaunchJob::KeepAlive::AfterFailure:
        return "Restart=on-failure\n" + pause + "RestartForceExitStatus=" + signalsOfSuccess + '\n';
    case LaunchJob::KeepAlive::AfterSuccess:
        return "Restart=on-success\n" + pause + "RestartPreventExitStatus=" + signalsOfSuccess +
               '\n';
    }
    return "Restart=no\n";
}

} // namespace

QByteArray launchUnitName(const QByteArray &label)
{
    QByteArray name;
    for (const char byte : label) {
        const auto stands = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                            (byte >= '0' && byte <= '9') || byte == ':' || byte == '_' ||
                            byte == '.';
        name += stands ? QByteArray(1, byte) : hexEscape(byte);
    }
    return unitPrefix + name + unitSuffix;
}

QByteArray launchUnitLabel(const QByteArray &unitName)
{
    if (!unitName.startsWith(unitPrefix) || !unitName.endsWith(unitSuffix)) {
        return {};
    }
    const QByteArray name =
        unitName.mid(unitPrefix.size()).chopped(static_cast<int>(unitSuffix.size()));
    QByteArray label;
    for (auto at = 0; at < name.size(); ++at) {
        if (name.mid(at, 2) == "\\x") {
            label += QByteArray::fromHex(name.mid(at + 2, 2));
            at += 3;
        } else {
            label += name.at(at);
        }
    }
    // Only the one spelling that we use ourselves.
    return launchLabelObjection(label).isNull() && launchUnitName(label) == unitName ? label
                                                                                     : QByteArray();
}

QByteArray launchUnitFile(const LaunchJob &job)
{
    // Without a limit on starts: a manager that gives up does so until the next log-in.
    QByteArray unit = "# Made from a job file at each login and reload; changes here are lost.\n"
                      "[Unit]\n"
                      "Description=" +
                      withoutSpecifiers(job.label) +
                      " (launch agent)\n"
                      "Documentation=" +
                      withoutSpecifiers(fileUri(job.file)) +
                      "\nSourcePath=" + withoutSpecifiers(job.file) +
                      "\nStartLimitIntervalSec=0\n\n"
                      "[Service]\n"
                      "Type=exec\n"
                      "Slice=app.slice\n"
                      "KillMode=mixed\n"
                      "TimeoutStopSec=5\n";
    unit += restartLines(job) + "ExecStart=" + commandLine(job) + '\n';
    for (const auto &[name, path] : pathSettings(job)) {
        if (!path.isEmpty()) {
            unit += name + withoutSpecifiers(path) + '\n';
        }
    }
    for (const auto &variable : job.environment) {
        unit += "Environment=" + quoted(variable) + '\n';
    }
    if (job.nice) {
        unit += "Nice=" + QByteArray::number(*job.nice) + '\n';
    }
    if (job.umask) {
        unit += "UMask=" + QByteArray::number(*job.umask, 8).rightJustified(4, '0') + '\n';
    }
    if (job.isBackground) {
        unit += "CPUSchedulingPolicy=batch\nIOSchedulingClass=idle\n";
    }
    return unit;
}

QByteArray logInUnitFile(const QByteArray &launchctl)
{
    LaunchJob command;
    command.program = launchctl;
    command.arguments = {launchctl, "log-in"};
    // Only what has said that it is ready is through with the start of the manager.
    return "# Made where jobs are to run at log-in; changes here are lost.\n"
           "[Unit]\n"
           "Description=Jobs that wait for the graphical session\n"
           "StartLimitIntervalSec=0\n\n"
           "[Service]\n"
           "Type=notify\n"
           "Slice=app.slice\n"
           "Restart=on-failure\n"
           "RestartSec=10\n"
           "ExecStart=" +
           commandLine(command) + '\n';
}

QString launchUnitObjection(const LaunchJob &job)
{
    const auto file = readableName(job.file);
    if (!canStandPlain(job.file)) {
        return QStringLiteral("%1: systemd cannot take a job file in a folder with such a name")
            .arg(file);
    }
    for (const auto &[name, path] : pathSettings(job)) {
        if (!path.isEmpty() && !canStandPlain(path)) {
            return QStringLiteral("%1: systemd cannot take a path with such a name: %2")
                .arg(file, readableName(path));
        }
    }
    const auto words = QByteArrayList{job.program} + job.arguments;
    const auto other = std::find_if_not(words.begin(), words.end(), isUtf8Name);
    return other == words.end() ? QString()
                                : QStringLiteral("%1: systemd cannot take what is not UTF-8: %2")
                                      .arg(file, readableName(*other));
}

} // namespace platform
