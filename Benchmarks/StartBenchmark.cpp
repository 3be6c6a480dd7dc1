// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// From the move of the switch to "Launching service...", beside the same commands and pauses run
// one after the other by a bare posix_spawn. As root of the sandbox, who is asked for no password.
#include "Platform/Core/Basics/SystemCommand.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Preference Pane/Pane/Ostrel_Preference_Pane.h"
#include "Preference Pane/Switch/ZQSwitch.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTemporaryDir>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int rounds = 5;
constexpr double goal = 50; // milliseconds
constexpr auto timeLimit = 20s;

double milliseconds(Clock::duration time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

pid_t spawn(const char *path, std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), path);
    std::vector<char *> pointers;
    pointers.reserve(arguments.size() + 1);
    for (auto &argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    const auto command = platform::systemCommand(QString::fromUtf8(path)).toUtf8();
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    ::posix_spawn(&pid, command.constData(), &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return pid;
}

void run(const char *path, const std::vector<std::string> &arguments)
{
    ::waitpid(spawn(path, arguments), nullptr, 0);
}

// What a start runs, and the pauses that it must make.
double commandsAlone()
{
    const std::string job = "/Library/LaunchAgents/peer.plist";
    platform::writeDictionaryToFile({{QStringLiteral("Label"), QStringLiteral("peer")},
                                     {QStringLiteral("Program"), QStringLiteral("/bin/true")}},
                                    QString::fromStdString(job));
    const auto begin = Clock::now();
    run("/usr/bin/killall", {"OstrelListener"});
    const std::array privileged{spawn("/usr/sbin/chown", {"root:wheel", job}),
                                spawn("/bin/chmod", {"644", job})};
    std::this_thread::sleep_for(500us);
    std::this_thread::sleep_for(1s);
    run("/bin/launchctl", {"unload", job});
    run("/bin/launchctl", {"load", job});
    const auto taken = milliseconds(Clock::now() - begin);
    for (const auto pid : privileged) {
        ::waitpid(pid, nullptr, 0);
    }
    run("/bin/launchctl", {"unload", job});
    QFile::remove(QString::fromStdString(job));
    return taken;
}

double start(QWidget &view)
{
    auto *const control = view.findChild<ZQSwitch *>(QStringLiteral("masterSwitch"));
    const auto *const line = view.findChild<QLabel *>(QStringLiteral("statusLabel"));
    const auto begin = Clock::now();
    control->setOn(true, Animated::No);
    platform::pumpEventsUntil([&] {
        return line->text() == QStringLiteral("Status: Launching service...") ||
               Clock::now() - begin > timeLimit;
    });
    if (Clock::now() - begin > timeLimit) {
        std::fprintf(stderr, "The start got no further than \"%s\".\n",
                     qUtf8Printable(line->text()));
        std::exit(1);
    }
    return milliseconds(Clock::now() - begin);
}

void stop(QWidget &view, const Ostrel_Preference_Pane &pane)
{
    auto *const control = view.findChild<ZQSwitch *>(QStringLiteral("masterSwitch"));
    platform::pumpEventsUntil([&] { return !pane.isProcessing() && control->enabled(); });
    control->setOn(false, Animated::No);
    platform::pumpEventsUntil([&] { return pane.isProcessing(); });
    platform::pumpEventsUntil([&] { return !pane.isProcessing() && control->enabled(); });
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const QTemporaryDir folder;
    const auto programs = folder.filePath(QStringLiteral("Ostrel.prefPane/Contents/MacOS"));
    QDir().mkpath(programs);
    QDir().mkpath(QStringLiteral("/Library/LaunchAgents"));
    QFile::copy(QStringLiteral("/usr/bin/sleep"), programs + QStringLiteral("/OstrelListener"));
    std::vector<double> ours;
    std::vector<double> peer;
    for (int round = 0; round < rounds; ++round) {
        // A pane for each: for 15 seconds after a start its worker keeps a processor busy.
        QWidget window; // outlives the pane, whose view is in it
        Ostrel_Preference_Pane pane(
            platform::Bundle(folder.filePath(QStringLiteral("Ostrel.prefPane"))));
        auto *const view = pane.loadMainView(&window);
        platform::pumpEventsUntil([&] { return !pane.isLoading(); });
        ours.push_back(start(*view));
        stop(*view, pane);
    }
    for (int round = 0; round < rounds; ++round) {
        peer.push_back(commandsAlone());
    }
    std::printf(
        "switch to \"Launching service...\"   ours %8.1f ms   commands and pauses %8.1f ms   "
        "more %5.1f ms   goal <= %.0f\n",
        median(ours), median(peer), median(ours) - median(peer), goal);
    return 0;
}
