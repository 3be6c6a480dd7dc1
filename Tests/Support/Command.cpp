// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/Command.h"

#include <QTest>

namespace test {

Command::Command(const QString &program, const QStringList &arguments)
{
    setProcessChannelMode(QProcess::ForwardedErrorChannel);
    start(program, arguments);
}

Command::~Command()
{
    if (state() != QProcess::NotRunning) {
        kill();
        waitForFinished();
    }
}

bool Command::waitForOutput(const QString &text)
{
    return QTest::qWaitFor([&] { return output().contains(text); }, 30000);
}

QString Command::output()
{
    m_output += readAllStandardOutput();
    return QString::fromUtf8(m_output);
}

} // namespace test
