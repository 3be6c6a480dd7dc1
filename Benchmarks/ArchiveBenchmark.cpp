// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What zipping 200 MB of logs costs, and unpacking them, beside "zip -r" and "unzip": time, size
// and memory. Both read and write files in memory: what is measured is the packing, not the disk.
// Packing is to be no slower than "zip -r", at no more than 1.02 of its size.
#include "Benchmarks/Timing.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

using timing::median;

constexpr std::size_t megabyte = 1000000;
constexpr std::size_t part = megabyte;
constexpr int rounds = 5;

using Clock = std::chrono::steady_clock;
using Words = std::vector<std::string>;

struct Cost {
    std::vector<double> seconds;
    std::vector<double> processorSeconds; // which other work on the computer hardly changes
    long kilobytes = 0;                   // the most memory
};

// Lines as the listener and the pane write them, with figures that differ from line to line.
std::string log(std::size_t size, unsigned seed)
{
    constexpr std::array events{
        "Connection from %u.%u refused: not confirmed in time",
        "Status requested; answering \"Connected\" after %u ms, queue %u",
        "Key %u pressed with modifiers 0x%x",
        "Error moving file: /home/somebody/Library/Preferences/item %u.plist: No such file. %u",
        "Preset com.example.application%u read in %u microseconds",
        "Volume changed to %u, feedback %u"};
    std::mt19937 generator(seed);
    const auto random = [&generator] { return static_cast<unsigned>(generator()); };
    std::string text;
    text.reserve(size + 256);
    unsigned milliseconds = 0;
    while (text.size() < size) {
        milliseconds += random() % 4000;
        char line[256]; // NOLINT(*-avoid-c-arrays)
        const auto seconds = milliseconds / 1000;
        auto length = std::snprintf(
            line, sizeof line, "2026-11-%02u %02u:%02u:%02u.%03u [%u]: ", 1 + seconds / 86400 % 28,
            seconds / 3600 % 24, seconds / 60 % 60, seconds % 60, milliseconds % 1000,
            random() % 30000);
        text.append(line, static_cast<std::size_t>(length));
        length = std::snprintf(line, sizeof line, events.at(random() % events.size()),
                               random() % 1000, random() % 65536);
        text.append(line, static_cast<std::size_t>(length));
        text += '\n';
    }
    return text;
}

void makeLogs(const std::string &folder, int files, std::size_t size)
{
    fs::create_directories(folder);
    for (int number = 0; number < files; ++number) {
        const auto path = folder + "/Application." + std::to_string(number) + ".log";
        auto *const file = std::fopen(path.c_str(), "we");
        // In parts: what runs here later is counted with the most memory that this had before.
        auto isWritten = file != nullptr;
        for (std::size_t done = 0; isWritten && done < size; done += part) {
            const auto text =
                log(std::min(part, size - done),
                    static_cast<unsigned>(number) * 1000 + static_cast<unsigned>(done / part));
            isWritten = std::fwrite(text.data(), 1, text.size(), file) == text.size();
        }
        if (!isWritten || std::fclose(file) != 0) {
            std::perror(path.c_str());
            std::exit(1); // NOLINT(*-mt-unsafe)
        }
    }
}

void run(Words words, Cost &cost)
{
    std::vector<char *> arguments;
    for (auto &word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_t process = 0;
    int status = 0;
    rusage usage{};
    const auto start = Clock::now();
    if (::posix_spawn(&process, words[0].c_str(), nullptr, nullptr, arguments.data(), environ) !=
            0 ||
        ::wait4(process, &status, 0, &usage) != process || status != 0) {
        std::fprintf(stderr, "%s failed\n", words[0].c_str());
        std::exit(1); // NOLINT(*-mt-unsafe)
    }
    cost.seconds.push_back(std::chrono::duration<double>(Clock::now() - start).count());
    const auto duration = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / megabyte;
    };
    cost.processorSeconds.push_back(duration(usage.ru_utime) + duration(usage.ru_stime));
    cost.kilobytes = std::max(cost.kilobytes, usage.ru_maxrss);
}

void print(const char *what, Cost &ours, const char *peer, Cost &theirs)
{
    const auto our = median(ours.seconds);
    const auto their = median(theirs.seconds);
    std::printf("%-12s ours %6.2f s (processors %5.2f s, %ld MB)   %-6s %6.2f s (%5.2f s, %ld MB)"
                "   ratio %.2f\n",
                what, our, median(ours.processorSeconds), ours.kilobytes / 1024, peer, their,
                median(theirs.processorSeconds), theirs.kilobytes / 1024, our / their);
}

void compare(const std::string &ditto, const std::string &folder, int files, std::size_t size)
{
    const auto logs = folder + "/logs";
    const auto ourArchive = folder + "/ours.zip";
    const auto theirArchive = folder + "/theirs.zip";
    const auto out = folder + "/out";
    makeLogs(logs, files, size);
    Cost packing;
    Cost theirPacking;
    Cost unpacking;
    Cost theirUnpacking;
    for (int round = 0; round < rounds; ++round) {
        fs::remove(ourArchive);
        fs::remove(theirArchive);
        run({ditto, "-ck", "--keepParent", logs, ourArchive}, packing);
        run({"/usr/bin/zip", "-qr", theirArchive, logs}, theirPacking);
        run({ditto, "-xk", ourArchive, out}, unpacking);
        fs::remove_all(out);
        run({"/usr/bin/unzip", "-q", ourArchive, "-d", out}, theirUnpacking);
        fs::remove_all(out);
    }
    const auto ours = static_cast<double>(fs::file_size(ourArchive));
    const auto theirs = static_cast<double>(fs::file_size(theirArchive));
    std::printf("%d files of %.3f MB; medians of %d rounds\n", files,
                static_cast<double>(size) / megabyte, rounds);
    print("  packing", packing, "zip -r", theirPacking);
    print("  unpacking", unpacking, "unzip", theirUnpacking);
    std::printf("  size       ours %6.2f MB   zip -r %6.2f MB   ratio %.3f\n", ours / megabyte,
                theirs / megabyte, ours / theirs);
    fs::remove_all(folder);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fputs("usage: ArchiveBenchmark BUILD_FOLDER\n", stderr);
        return 2;
    }
    const auto ditto =
        std::string(argv[1]) + "/libexec/ostrel/ditto"; // NOLINT(*-pointer-arithmetic)
    const auto folder = "/tmp/ArchiveBenchmark." + std::to_string(::getpid());
    compare(ditto, folder, 20, 10 * megabyte);
    compare(ditto, folder, 1, 200 * megabyte);
    compare(ditto, folder, 10000, megabyte / 50);
}
