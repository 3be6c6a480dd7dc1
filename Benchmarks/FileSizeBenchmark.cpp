// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What the size of 100,000 files costs, beside "du -sb", with the files in many folders, in few and
// in one. Warm: what is measured is the walk, not the disk.
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

void makeFiles(const std::string &folder, int folders)
{
    for (int i = 0; i < folders; ++i) {
        const auto below = folder + '/' + std::to_string(i);
        std::filesystem::create_directories(below);
        for (int number = 0; number < files / folders; ++number) {
            const auto path = below + "/file " + std::to_string(number) + ".txt";
            const auto file = ::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
            if (file < 0 || ::ftruncate(file, number) != 0) {
                std::perror("file");
                std::exit(1); // NOLINT(*-mt-unsafe)
            }
            ::close(file);
        }
    }
}

void runDu(const std::string &folder)
{
    std::string program = "du";
    std::string option = "-sb";
    std::string path = folder;
    const std::array<char *, 4> arguments{program.data(), option.data(), path.data(), nullptr};
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = 0;
    if (::posix_spawn(&process, "/usr/bin/du", &actions, nullptr, arguments.data(), environ) != 0) {
        std::perror("du");
        std::exit(1); // NOLINT(*-mt-unsafe)
    }
    ::waitpid(process, nullptr, 0);
    ::posix_spawn_file_actions_destroy(&actions);
}

} // namespace

int main()
{
    std::printf("%d files; medians of %d walks.\n", files, rounds);
    for (const auto folders : {1000, 100, 1}) {
        const auto folder = "/tmp/FileSizeBenchmark." + std::to_string(::getpid());
        makeFiles(folder, folders);
        std::vector<double> ourTimes;
        std::vector<double> theirTimes;
        quint64 size = 0;
        for (int round = 0; round < rounds; ++round) {
            ourTimes.push_back(milliseconds(
                [&] { size = ZQFileManager::fileSize(QString::fromStdString(folder)); }));
            theirTimes.push_back(milliseconds([&] { runDu(folder); }));
        }
        const auto ours = median(ourTimes);
        const auto theirs = median(theirTimes);
        std::printf("%4d folders, %llu bytes   ours %7.1f ms   du -sb %7.1f ms   ratio %.2f\n",
                    folders, static_cast<unsigned long long>(size), ours, theirs, ours / theirs);
        std::filesystem::remove_all(folder);
    }
}
