// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What copying in the background costs, beside "cp -a": one file of 1 GiB, 20,000 small files in
// 200 folders, and as many in one. From the call to the report that it is finished, warm: what is
// read is in memory.
#include "Benchmarks/Timing.h"
#include "Shared/Files/ZQFileManager.h"

#include <QCoreApplication>

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

constexpr int files = 20000;
constexpr int rounds = 9;
constexpr std::size_t largeFile = std::size_t(1) << 30U;

using Clock = std::chrono::steady_clock;

[[noreturn]] void giveUp(const char *what)
{
    std::perror(what);
    std::exit(1); // NOLINT(*-mt-unsafe)
}

void makeFile(const std::string &path, std::size_t size)
{
    const auto file = ::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    const std::vector<char> piece(std::min<std::size_t>(size, 1 << 20U), 'p');
    for (std::size_t left = size; left > 0;) {
        const auto count = ::write(file, piece.data(), std::min(left, piece.size()));
        if (count <= 0) {
            giveUp(path.c_str());
        }
        left -= static_cast<std::size_t>(count);
    }
    ::close(file);
}

void makeFiles(const std::string &folder, int folders)
{
    for (int i = 0; i < folders; ++i) {
        const auto below = folder + '/' + std::to_string(i);
        std::filesystem::create_directories(below);
        for (int number = 0; number < files / folders; ++number) {
            makeFile(below + "/file " + std::to_string(number) + ".txt",
                     static_cast<std::size_t>(number * 37 % 4000));
        }
    }
}

void runCp(const std::string &source, const std::string &copy)
{
    std::string program = "cp";
    std::string option = "-a";
    std::string from = source;
    std::string to = copy;
    const std::array<char *, 5> arguments{program.data(), option.data(), from.data(), to.data(),
                                          nullptr};
    pid_t process = 0;
    int status = 0;
    if (::posix_spawn(&process, "/usr/bin/cp", nullptr, nullptr, arguments.data(), environ) != 0 ||
        ::waitpid(process, &status, 0) != process || status != 0) {
        giveUp("cp");
    }
}

class Delegate : public QObject {
    Q_OBJECT
public:
    Q_INVOKABLE void fileOperationFinished(const QVariantMap & /*report*/)
    {
        QCoreApplication::exit();
    }
};

void runOurs(const std::string &source, const std::string &copy)
{
    Delegate delegate;
    if (!ZQFileManager::copyFileWithProgress(QString::fromStdString(source),
                                             QString::fromStdString(copy), &delegate, {})) {
        giveUp("our copy");
    }
    QCoreApplication::exec();
    if (!std::filesystem::exists(copy)) {
        giveUp("our copy");
    }
}

template <typename Copy>
double milliseconds(const Copy &copy, const std::string &source, const std::string &to)
{
    ::sync();
    const auto start = Clock::now();
    copy(source, to);
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void compare(const char *what, const std::string &folder)
{
    std::vector<double> ourTimes;
    std::vector<double> theirTimes;
    for (int round = 0; round < rounds; ++round) {
        // Names of their own: some file systems are slow to make files where many have just gone.
        const auto ours = folder + "/ours " + std::to_string(round);
        const auto theirs = folder + "/theirs " + std::to_string(round);
        ourTimes.push_back(milliseconds(runOurs, folder + "/source", ours));
        if (std::filesystem::is_regular_file(ours)) {
            std::filesystem::remove(ours);
        }
        theirTimes.push_back(milliseconds(runCp, folder + "/source", theirs));
        if (std::filesystem::is_regular_file(theirs)) {
            std::filesystem::remove(theirs);
        }
    }
    const auto ours = median(ourTimes);
    const auto theirs = median(theirTimes);
    std::printf("%-28s ours %7.1f ms   cp -a %7.1f ms   ratio %.2f\n", what, ours, theirs,
                ours / theirs);
    std::fflush(stdout);
    std::filesystem::remove_all(folder);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    for (int i = 1; i < argc; ++i) {
        const auto folder = argv[i] + ("/CopyBenchmark." + std::to_string(::getpid()));
        std::printf("In %s; medians of %d copies.\n", argv[i], rounds);
        std::filesystem::create_directories(folder);
        makeFile(folder + "/source", largeFile);
        compare("1 GiB", folder);
        makeFiles(folder + "/source", 200);
        compare("20,000 files, 200 folders", folder);
        makeFiles(folder + "/source", 1);
        compare("20,000 files, one folder", folder);
    }
}

#include "CopyBenchmark.moc"
