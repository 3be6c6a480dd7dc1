// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// Ends in the middle of what the task runner has begun. The argument says of what; the exit status
// is 0 when all went well up to there.
#include "Shared/Tasks/ZQTaskEx.h"

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <thread>

namespace {

const auto trueProgram = QStringLiteral("/bin/true");

void sleepingTimers()
{
    for (int i = 0; i < 20; ++i) {
        ZQTaskEx::runTask(trueProgram, {}, std::chrono::hours(24));
    }
}

// The timers of time-outs that are over at once meet the end of the application.
void timersThatAreDue()
{
    std::thread worker([] {
        for (int i = 0; i < 200; ++i) {
            ZQTaskEx::runTask(trueProgram, {}, std::chrono::seconds(0));
        }
    });
    QThread::msleep(30);
    worker.detach();
}

void readers()
{
    for (int i = 0; i < 10; ++i) {
        ZQTaskEx::create()->asyncDataFromTask(
            QStringLiteral("/usr/bin/yes"), {},
            [](const QByteArray &, ZQTaskEx &, const QVariant &) {});
    }
    QThread::msleep(20);
}

void commandsThatRun()
{
    for (int i = 0; i < 10; ++i) {
        ZQTaskEx::runTaskAndReturn(QStringLiteral("/bin/sleep"), {QStringLiteral("0.1")});
    }
}

} // namespace

int main(int count, char **arguments)
{
    const QByteArray what(count > 1 ? arguments[1] : "");
    {
        const QCoreApplication application(count, arguments);
        what == "sleeping timers" ? sleepingTimers()
        : what == "due timers"    ? timersThatAreDue()
        : what == "readers"       ? readers()
        : what == "commands"      ? commandsThatRun()
                                  : qFatal("what?");
    }
    // Without the application nothing is timed out any more, and nothing hangs.
    return ZQTaskEx::terminationCodeFromTask(trueProgram, {}, std::chrono::seconds(0)) == 0 ? 0 : 1;
}
