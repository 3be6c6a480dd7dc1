// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What replacing a file of 2 KB safely costs, beside QSaveFile.
#include "Benchmarks/Timing.h"
#include "Platform/Core/Files/FileContents.h"

#include <QSaveFile>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

using timing::median;

constexpr int rounds = 501;
constexpr int size = 2048;

using Clock = std::chrono::steady_clock;

bool saveWithQt(const QString &path, const QByteArray &contents)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size() &&
           file.commit();
}

template <typename Call>
double microseconds(const Call &call)
{
    const auto start = Clock::now();
    if (!call()) {
        std::puts("not replaced");
    }
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

} // namespace

int main(int argc, char **argv)
{
    // A folder on a disk tells more than the sandbox's, whose files are in memory.
    const auto folder = QString::fromLocal8Bit(argc > 2 ? argv[2] : "/tmp");
    const auto path = folder + QStringLiteral("/ReplaceFileBenchmark");
    const QByteArray contents(size, 'a');
    std::vector<double> ourTimes;
    std::vector<double> theirTimes;
    for (int round = 0; round < rounds; ++round) {
        ourTimes.push_back(microseconds([&] { return platform::replaceFile(path, contents); }));
        theirTimes.push_back(microseconds([&] { return saveWithQt(path, contents); }));
    }
    std::remove(path.toLocal8Bit().constData());
    const auto ours = median(ourTimes);
    const auto theirs = median(theirTimes);
    std::printf("replace %d bytes, %d times   ours %7.1f us   QSaveFile %7.1f us   ratio %.2f\n",
                size, rounds, ours, theirs, ours / theirs);
}
