// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What it costs to list the items that match a pattern among 100,000, beside "find" with the same
// pattern. Warm: what is measured is the listing, not the disk.
#include "Benchmarks/Timing.h"
#include "Shared/Files/ZQFileManager.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using timing::median;
using timing::milliseconds;

constexpr int files = 100000;
constexpr int rounds = 21;

void makeFiles(const std::string &folder)
{
    std::filesystem::create_directories(folder);
    for (int number = 0; number < files; ++number) {
        const auto *const kind = number % 10 == 0 ? ".log" : ".txt";
        const auto path = folder + "/file " + std::to_string(number) + kind;
        const auto file = ::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        if (file < 0) {
            std::perror("file");
            std::exit(1); // NOLINT(*-mt-unsafe)
        }
        ::close(file);
    }
}

void runFind(std::string folder, std::string pattern)
{
    std::array<std::string, 4> words{"find", "-mindepth", "1", "-name"};
    const std::array<char *, 7> arguments{words[0].data(), folder.data(),   words[1].data(),
                                          words[2].data(), words[3].data(), pattern.data(),
                                          nullptr};
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = 0;
    if (::posix_spawn(&process, "/usr/bin/find", &actions, nullptr, arguments.data(), environ) !=
        0) {
        std::perror("find");
        std::exit(1); // NOLINT(*-mt-unsafe)
    }
    ::waitpid(process, nullptr, 0);
    ::posix_spawn_file_actions_destroy(&actions);
}

} // namespace

int main()
{
    const auto folder = "/tmp/WildcardBenchmark." + std::to_string(::getpid());
    makeFiles(folder);
    std::printf("%d files; medians of %d listings.\n", files, rounds);
    for (const auto *const pattern : {"*.log", "*", "*9*9*", "file ?????.l*", "*[13579].txt"}) {
        std::vector<double> ourTimes;
        std::vector<double> theirTimes;
        QStringList found;
        for (int round = 0; round < rounds; ++round) {
            ourTimes.push_back(milliseconds([&] {
                found = ZQFileManager::filesMatchingWildcardPath(QString::fromLatin1(pattern),
                                                                 QString::fromStdString(folder));
            }));
            theirTimes.push_back(milliseconds([&] { runFind(folder, pattern); }));
        }
        const auto ours = median(ourTimes);
        const auto theirs = median(theirTimes);
        std::printf("%-15s %6d found   ours %6.1f ms   find %6.1f ms   ratio %.2f\n", pattern,
                    static_cast<int>(found.size()), ours, theirs, ours / theirs);
    }
    std::filesystem::remove_all(folder);
}
