// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// Takes the listener's place in a copy of the bundle; SIGUSR1 ends it with success. It says
// nothing, unless a file beside it tells it otherwise: with "answers" it reports "Running" at its
// start and when it is asked, and nothing else; with "real/OstrelListener" it becomes that program
// after a second, as a listener that takes its time to come up.
#include "Platform/Core/Notifications/DistributedNotificationCenter.h"

#include <QCoreApplication>

#include <unistd.h>

#include <csignal>
#include <filesystem>

namespace {

void sayRunning()
{
    platform::postDistributedNotification(
        {QStringLiteral("ZQOstrelClientStatusUpdate"),
         {},
         {{QStringLiteral("status"), QStringLiteral("Running")}}});
}

} // namespace

int main(int argc, char *argv[])
{
    std::signal(SIGUSR1, [](int) { ::_exit(0); });
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const auto real = folder / "real" / "OstrelListener";
    if (std::filesystem::exists(real)) {
        ::sleep(1);
        ::execl(real.c_str(), real.c_str(), nullptr); // NOLINT(*-vararg)
        return 1;
    }
    if (!std::filesystem::exists(folder / "answers")) {
        for (;;) {
            ::pause();
        }
    }
    const QCoreApplication application(argc, argv);
    const platform::DistributedObserver requests(QStringLiteral("ZQOstrelClientCurrentStatus"),
                                                 [](const auto & /*request*/) { sayRunning(); });
    sayRunning();
    return QCoreApplication::exec();
}
