// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/ConsoleSeat.h"

#include <QFile>

namespace test {
namespace {

const auto seatFile = QStringLiteral("/run/systemd/seats/seat0");
const auto sessionFile = QStringLiteral("/run/systemd/sessions/c1");

void write(const QString &path, const QString &text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0) {
        qFatal("cannot write %s; run this test in the sandbox", qPrintable(path));
    }
}

} // namespace

ConsoleSeat::ConsoleSeat()
{
    write(seatFile, QStringLiteral("IS_SEAT0=1\nCAN_MULTI_SESSION=1\nCAN_GRAPHICAL=1\n"));
}

ConsoleSeat::~ConsoleSeat()
{
    QFile::remove(seatFile);
    QFile::remove(sessionFile);
}

void ConsoleSeat::activate(const QString &account, unsigned uid, const char *sessionClass)
{
    write(sessionFile,
          QStringLiteral("UID=%1\nUSER=%2\nACTIVE=1\nSTATE=active\nREMOTE=0\nTYPE=x11\nCLASS=%3\n"
                         "SEAT=seat0\n")
              .arg(uid)
              .arg(account, QString::fromLatin1(sessionClass)));
    write(seatFile, QStringLiteral("IS_SEAT0=1\nCAN_MULTI_SESSION=1\nCAN_GRAPHICAL=1\nACTIVE=c1\n"
                                   "ACTIVE_UID=%1\nSESSIONS=c1\nUIDS=%1\n")
                        .arg(uid));
}

} // namespace test
