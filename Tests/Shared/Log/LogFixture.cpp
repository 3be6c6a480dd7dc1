// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Shared/Log/LogFixture.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

namespace test {

QString userLogFolder()
{
    return QDir::homePath() + QStringLiteral("/Library/Logs/Corvane");
}

QString localLogFolder()
{
    return QStringLiteral("/Library/Logs/Corvane");
}

QString generation(int number, const QString &name, const QString &folder)
{
    const auto own = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    return QStringLiteral("%1/%2.%3.log").arg(folder, name.isNull() ? own : name).arg(number);
}

void clearLibraries()
{
    for (const auto &library :
         {QDir::homePath() + QStringLiteral("/Library"), QStringLiteral("/Library")}) {
        for (const auto &entry : QDir(library).entryInfoList(
                 QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System)) {
            if (entry.isDir() && !entry.isSymLink()) {
                QDir(entry.filePath()).removeRecursively();
            } else {
                QFile::remove(entry.filePath());
            }
        }
    }
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &path, const QByteArray &contents)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

QStringList entries(const QString &path)
{
    static const QRegularExpression line(
        QStringLiteral(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \+0000 - (.+)$)"));
    auto lines = QString::fromUtf8(contents(path)).split(QLatin1Char('\n'));
    if (lines.last().isEmpty()) {
        lines.removeLast();
    } else {
        lines.last().prepend(QStringLiteral("BAD: unfinished: "));
    }
    for (auto &text : lines) {
        const auto match = line.match(text);
        text = match.hasMatch() ? match.captured(1) : QStringLiteral("BAD: ") + text;
    }
    return lines;
}

int headerSize(const QStringList &entries)
{
    static const QRegularExpression started(
        QStringLiteral(R"(^Log started: \d{4}-\d\d-\d\d \d\d:\d\d:\d\d \+0000$)"));
    static const QRegularExpression system(
        QStringLiteral(R"(^System: OS X .+, \d+ CPU\(s\), \d+\.\d\d GB RAM$)"));
    const auto mode = QStringLiteral("Running in %1-bit mode").arg(QSysInfo::WordSize);
    const bool isHeader = entries.size() >= 4 && started.match(entries[0]).hasMatch() &&
                          entries[1].startsWith(QStringLiteral("Path: /")) &&
                          system.match(entries[2]).hasMatch() && entries[3] == mode;
    return isHeader ? 4 : 0;
}

QStringList body(const QString &path)
{
    const auto all = entries(path);
    return all.mid(headerSize(all));
}

QString logProgram()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/LogProgram");
}

Run runLogProgram(const QStringList &commands, const QString &program)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program.isNull() ? logProgram() : program, commands);
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        qWarning("LogProgram did not end");
    }
    Run run;
    run.output = QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'));
    run.output.removeLast();
    run.exitCode = process.exitCode();
    run.crashed = process.exitStatus() == QProcess::CrashExit;
    return run;
}

} // namespace test
