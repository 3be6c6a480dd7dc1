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

// What systemd takes for the beginning of a specifier is doubled.
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

// What printf turns back with "%b".
QByteArray octalEscaped(const QByteArray &word)
{
    QByteArray result;
    for (const char byte : word) {
        const auto code = static_cast<uchar>(byte);
        result += code < 0x80 && byte != '\\'
                      ? QByteArray(1, byte)
                      : "\\0" + QByteArray::number(code, 8).rightJustified(3, '0');
    }
    return result;
}

// Whether a setting that is one path, without quotes and escapes, can hold this one.
bool canStandPlain(const QByteArray &path)
{
    return isUtf8Name(path) && std::none_of(path.begin(), path.end(), isControl) &&
           !path.endsWith('\\') && !path.endsWith(' ') && !(path + '/').contains("/../");
}

// systemd runs no program of such a name itself.
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

// The settings that name paths, and the command line. What systemd cannot express as a setting a
// shell does, which replaces itself by the program.
class Execution {
public:
    explicit Execution(const LaunchJob &job) : m_job(job)
    {
        redirect("StandardInput=file:", m_job.standardInPath, "exec <\"$1\"");
        redirect("StandardOutput=append:", m_job.standardOutPath, "exec >>\"$1\"");
        redirect("StandardError=append:", m_job.standardErrorPath, "exec 2>>\"$1\"");
        if (canStandPlain(m_job.workingDirectory)) {
            setting("WorkingDirectory=", m_job.workingDirectory);
        } else {
            byShell(m_job.workingDirectory, "cd -P -- \"$1\"");
        }
    }

    QByteArray lines() const
    {
        QByteArrayList words;
        if (m_script.isEmpty() && canBeRunPlain(m_job.program) &&
            std::all_of(m_job.arguments.begin(), m_job.arguments.end(), isUtf8Name)) {
            // The colon keeps "$" as it is, the at sign lets the program's own name be given.
            words << "@:" + m_job.program << m_job.arguments;
        } else {
            words << QByteArray(":/bin/sh") << QByteArray("-c") << script() << QByteArray("sh")
                  << scriptArguments();
        }
        std::transform(words.begin(), words.end(), words.begin(), quoted);
        return m_settings + "ExecStart=" + words.join(' ') + '\n';
    }

private:
    QByteArrayList plainArguments() const
    {
        return m_shellArguments + QByteArrayList{m_job.program} + m_job.arguments.mid(1);
    }

    bool isAllText() const
    {
        const auto arguments = plainArguments();
        return std::all_of(arguments.begin(), arguments.end(), isUtf8Name);
    }

    // A manager that holds bytes that are no UTF-8 cannot show the unit to anybody, so the shell
    // makes them. The full stop saves line breaks at the end.
    QByteArray script() const
    {
        const QByteArray decoding = "n=$#; while [ $n -gt 0 ]; do w=$(printf %b. \"$1\"); shift; "
                                    "set -- \"$@\" \"${w%.}\"; n=$((n-1)); done; ";
        return (isAllText() ? QByteArray() : decoding) + m_script + "exec \"$@\"";
    }

    QByteArrayList scriptArguments() const
    {
        auto arguments = plainArguments();
        if (!isAllText()) {
            std::transform(arguments.begin(), arguments.end(), arguments.begin(), octalEscaped);
        }
        return arguments;
    }

    void setting(const QByteArray &name, const QByteArray &path)
    {
        m_settings += name + withoutSpecifiers(path) + '\n';
    }

    void byShell(const QByteArray &path, const QByteArray &command)
    {
        m_script += command + " && shift && ";
        m_shellArguments << path;
    }

    void redirect(const QByteArray &name, const QByteArray &path, const QByteArray &command)
    {
        if (path.isEmpty()) {
            return;
        }
        if (canStandPlain(path)) {
            setting(name, path);
        } else {
            byShell(path, command);
        }
    }

    const LaunchJob &m_job;
    QByteArray m_settings;
    QByteArray m_script;
    QByteArrayList m_shellArguments;
};

// systemd counts the end by one of these signals as a success; a job's success is the exit status
// 0.
const QByteArray signalsOfSuccess("SIGHUP SIGINT SIGTERM SIGPIPE");

// A program that has crashed is back after a second. One that dies whenever it is started may do so
// five times in five of its intervals, as often as if it had waited for an interval each time; then
// it is left alone as failed, for everybody to see.
QByteArray restartLines(LaunchJob::KeepAlive keepAlive)
{
    switch (keepAlive) {
    case LaunchJob::KeepAlive::Never:
        break;
    case LaunchJob::KeepAlive::Always:
        return "Restart=always\nRestartSec=1\n";
    case LaunchJob::KeepAlive::AfterFailure:
        return "Restart=on-failure\nRestartSec=1\nRestartForceExitStatus=" + signalsOfSuccess +
               '\n';
    case LaunchJob::KeepAlive::AfterSuccess:
        return "Restart=on-success\nRestartSec=1\nRestartPreventExitStatus=" + signalsOfSuccess +
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
                            (byte == '.' && !name.isEmpty());
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
    const auto burst = 5;
    const auto interval = QByteArray::number(qlonglong(job.throttleInterval.count()) * burst);
    QByteArray unit =
        "# Made from a job file at each login and reload; changes here are lost.\n"
        "[Unit]\n"
        "Description=" +
        withoutSpecifiers(job.label) +
        " (launch agent)\n"
        "Documentation=" +
        withoutSpecifiers(fileUri(job.file)) + "\nSourcePath=" + withoutSpecifiers(job.file) +
        "\nStartLimitIntervalSec=" + interval + "\nStartLimitBurst=" + QByteArray::number(burst) +
        "\n\n"
        "[Service]\n"
        "Type=exec\n"
        "Slice=app.slice\n"
        "KillMode=mixed\n"
        "TimeoutStopSec=5\n";
    unit += restartLines(job.keepAlive) + Execution(job).lines();
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

QString launchUnitObjection(const LaunchJob &job)
{
    return canStandPlain(job.file)
               ? QString()
               : QStringLiteral("%1: systemd cannot take a job file in a folder of such a name")
                     .arg(readableName(job.file));
}

} // namespace platform
