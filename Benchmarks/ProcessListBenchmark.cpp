// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What one walk through the process list costs, beside a bare scan: readdir and readlinkat, and
// nothing else. Outside the sandbox there are more processes to see.
#include "Benchmarks/Timing.h"
#include "Platform/Core/Processes/ProcessList.h"

#include <dirent.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

using timing::median;

constexpr int rounds = 201;
constexpr int ownProcesses = 300; // so that there is something to list anywhere

using Clock = std::chrono::steady_clock;

int walk()
{
    int found = 0;
    platform::findProcess([&](const platform::ProcessInformation &process) {
        found += process.executable().isEmpty() ? 0 : 1;
        return false;
    });
    return found;
}

int bareScan()
{
    int found = 0;
    auto *const folder = ::opendir("/proc");
    std::array<char, PATH_MAX> target{};
    while (const auto *entry = ::readdir(folder)) {
        const auto *name = &entry->d_name[0];
        if (name[0] < '0' || name[0] > '9') {
            continue;
        }
        std::array<char, 300> link{};
        std::snprintf(link.data(), link.size(), "%s/exe", name);
        found += ::readlinkat(::dirfd(folder), link.data(), target.data(), target.size()) > 0;
    }
    ::closedir(folder);
    return found;
}

template <typename Call>
double microseconds(const Call &call)
{
    const auto start = Clock::now();
    call();
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

} // namespace

int main()
{
    std::vector<pid_t> children;
    for (int i = 0; i < ownProcesses; ++i) {
        children.push_back(::fork());
        if (children.back() == 0) {
            ::pause();
            ::_exit(0);
        }
    }
    std::vector<double> ourTimes;
    std::vector<double> bareTimes;
    for (int round = 0; round < rounds; ++round) {
        ourTimes.push_back(microseconds(walk));
        bareTimes.push_back(microseconds(bareScan));
    }
    const auto ours = median(ourTimes);
    const auto bare = median(bareTimes);
    std::printf("%d processes; medians of %d walks.\n", walk(), rounds);
    std::printf("process list   ours %8.1f us   bare scan %8.1f us   ratio %.2f\n", ours, bare,
                ours / bare);
    for (const auto child : children) {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
}
