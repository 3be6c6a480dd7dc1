// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/CommandRecorder.h"

#include <QFile>
#include <QFileInfo>

namespace test {
namespace {

const QString record = QStringLiteral("/tmp/recorded-commands");

} // namespace

CommandRecorder::CommandRecorder(const QString &path, const QString &shell) : m_path(path)
{
    QFile::remove(path);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        qFatal("cannot write %s", qUtf8Printable(path));
    }
    // One write for each run, so that runs side by side do not mix.
    file.write("#!/opt/bin/sh\nline=" + QFileInfo(path).fileName().toUtf8() +
               "\nfor argument; do line=\"$line [$argument]\"; done\nprintf '%s\\n' \"$line\" >>" +
               record.toUtf8() + "\n" + shell.toUtf8() + "\n");
    file.setPermissions(QFile::Permissions(0x7755));
}

CommandRecorder::~CommandRecorder()
{
    QFile::remove(m_path);
    const auto original = QStringLiteral("/opt") + m_path.mid(m_path.lastIndexOf(u"/bin/") >= 0
                                                                  ? m_path.lastIndexOf(u"/bin/")
                                                                  : m_path.lastIndexOf(u"/sbin/"));
    if (QFile::exists(original)) {
        QFile::link(original, m_path);
    }
}

QStringList CommandRecorder::runs()
{
    QFile file(record);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void CommandRecorder::forget()
{
    QFile::remove(record);
}

} // namespace test
