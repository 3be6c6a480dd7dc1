// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What running a command costs, beside bare system calls and QProcess. Each round measures all, one
// after the other. With the argument "large" the process holds 1 GiB meanwhile.
#include "Benchmarks/Timing.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Shared/Tasks/ZQTaskEx.h"

#include <QCoreApplication>
#include <QProcess>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

namespace {

using timing::median;
using timing::milliseconds;

constexpr int spawnRounds = 401;
constexpr int largeSpawnRounds = 41; // QProcess forks, which takes long then
constexpr int readRounds = 7;
constexpr std::size_t gibibyte = std::size_t{1} << 30;

pid_t spawn(std::array<char *, 4> arguments, const posix_spawn_file_actions_t *actions)
{
    pid_t child = -1;
    if (::posix_spawn(&child, arguments[0], actions, nullptr, arguments.data(), ::environ) != 0) {
        std::abort();
    }
    return child;
}

std::array<char, 11> truePath{"/bin/true"};
std::array<char, 15> headPath{"/usr/bin/head"};
std::array<char, 14> headOption{"-c1073741824"};
std::array<char, 10> zeroPath{"/dev/zero"};

void bareRun()
{
    const auto child = spawn({truePath.data(), nullptr}, nullptr);
    ::waitpid(child, nullptr, 0);
}

void ourRun()
{
    ZQTaskEx::runTask(QStringLiteral("/bin/true"), {});
}

void qProcessRun()
{
    QProcess process;
    process.start(QStringLiteral("/bin/true"), {});
    process.waitForFinished(-1);
}

// A loop as one writes it: what comes goes into a buffer that doubles.
void bareRead()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        std::abort();
    }
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    const auto child =
        spawn({headPath.data(), headOption.data(), zeroPath.data(), nullptr}, &actions);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    std::size_t capacity = 1 << 16;
    std::size_t size = 0;
    auto *buffer = static_cast<char *>(std::malloc(capacity));
    for (;;) {
        if (size == capacity) {
            capacity *= 2;
            buffer = static_cast<char *>(std::realloc(buffer, capacity));
        }
        const auto count = ::read(ends[0], buffer + size, capacity - size);
        if (count <= 0) {
            break;
        }
        size += static_cast<std::size_t>(count);
    }
    ::close(ends[0]);
    ::waitpid(child, nullptr, 0);
    if (size != gibibyte) {
        std::abort();
    }
    std::free(buffer);
}

void ourRead()
{
    const auto data = ZQTaskEx::dataFromTask(
        QStringLiteral("/usr/bin/head"),
        {QStringLiteral("-c1073741824"), QStringLiteral("/dev/zero")}, nullptr);
    if (static_cast<std::size_t>(data.size()) != gibibyte) {
        std::abort();
    }
}

void qProcessRead()
{
    QProcess process;
    process.start(QStringLiteral("/usr/bin/head"),
                  {QStringLiteral("-c1073741824"), QStringLiteral("/dev/zero")});
    process.waitForFinished(-1);
    if (static_cast<std::size_t>(process.readAllStandardOutput().size()) != gibibyte) {
        std::abort();
    }
}

struct Comparison {
    const char *name;
    void (*ours)();
    void (*bare)();
    void (*qProcess)();
    int rounds;
};

void compare(const Comparison &comparison, const char *where)
{
    std::vector<double> ours;
    std::vector<double> bare;
    std::vector<double> qProcess;
    for (int round = 0; round < comparison.rounds; ++round) {
        // After a fork this process is slow for a while; and nobody is always first.
        comparison.bare();
        if (round % 2 == 0) {
            ours.push_back(milliseconds(comparison.ours));
        }
        bare.push_back(milliseconds(comparison.bare));
        if (round % 2 != 0) {
            ours.push_back(milliseconds(comparison.ours));
        }
        qProcess.push_back(milliseconds(comparison.qProcess));
    }
    const auto our = median(ours);
    const auto plain = median(bare);
    std::printf("%-14s %-7s ours %8.3f ms   bare %8.3f ms   QProcess %8.3f ms   ours/bare %.2f\n",
                comparison.name, where, our, plain, median(qProcess), our / plain);
    std::fflush(stdout);
}

void onWorker(const Comparison &comparison)
{
    std::atomic<bool> done = false;
    std::thread worker([&] {
        compare(comparison, "worker");
        done = true;
    });
    platform::pumpEventsUntil([&] { return done.load(); });
    worker.join();
}

} // namespace

int main(int count, char **arguments)
{
    const QCoreApplication application(count, arguments);
    const bool isLarge = count > 1 && std::strcmp(arguments[count - 1], "large") == 0;
    std::vector<char> allocated(isLarge ? gibibyte : 0, 'x');
    const Comparison spawning{"spawn and wait", ourRun, bareRun, qProcessRun,
                              isLarge ? largeSpawnRounds : spawnRounds};
    std::printf("Medians of %d runs and of %d readings%s.\n", spawning.rounds, readRounds,
                isLarge ? ", from a process of 1 GiB" : "");
    compare(spawning, "main");
    onWorker(spawning);
    if (!isLarge) {
        onWorker({"read 1 GiB", ourRead, bareRead, qProcessRead, readRounds});
    }
    return static_cast<int>(allocated.size() % 2);
}
