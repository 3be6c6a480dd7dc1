// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Listener/StandInListener.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("OstrelListener"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OSTREL_VERSION " (stand-in)"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("A stand-in for the Ostrel listener: it answers the settings pane, opens no "
                       "network port and serves no remote control."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption statusOption(
        QStringLiteral("status"), QStringLiteral("Report this word instead of \"Running\"."),
        QStringLiteral("WORD"), QStringLiteral("Running"));
    parser.addOption(statusOption);
    parser.process(application);

    std::fputs("OstrelListener: this is a stand-in; it serves no remote control.\n", stderr);
    const StandInListener listener(parser.value(statusOption));
    return QCoreApplication::exec();
}
