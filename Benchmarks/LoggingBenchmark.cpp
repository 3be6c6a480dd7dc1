// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What a log call costs its caller and how many lines reach the file, beside asynchronous spdlog
// with a rotating file. Both write to the sandbox's memory.
#include "Shared/Log/ZQLog.h"

#include <QCoreApplication>

#include <spdlog/async.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr int rounds = 7;

double nanoseconds(Clock::duration time)
{
    return std::chrono::duration<double, std::nano>(time).count();
}

double percentile(std::vector<double> values, double share)
{
    const auto index = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + index, values.end());
    return values[static_cast<std::size_t>(index)];
}

struct Ours {
    static constexpr auto name = "ours";
    const QString from =
        QStringLiteral("/home/tester/Library/Preferences/com.corvane.listener.plist");
    const QString to = QStringLiteral("/tmp/5E4BD4E3-listener.plist");

    void log(int number) const
    {
        ZQLog::appendLog(QStringLiteral("Unable to move %@ to %@ (error %i)"), from, to, number);
    }
    static void finish() { ZQLog::finishWriting(); }
};

class Peer {
public:
    static constexpr auto name = "spdlog";

    Peer() { open(); }
    void log(int number) const
    {
        m_logger->info("Unable to move {} to {} (error {})", m_from, m_to, number);
    }

    // The logger says when it is done only by ending.
    void finish()
    {
        m_logger.reset();
        m_threads.reset();
        open();
    }

private:
    void open()
    {
        constexpr std::size_t queueLength = 8192; // its default
        constexpr std::size_t fileLength = 500000;
        m_threads = std::make_shared<spdlog::details::thread_pool>(queueLength, 1U);
        m_logger = std::make_shared<spdlog::async_logger>(
            "peer",
            std::make_shared<spdlog::sinks::rotating_file_sink_mt>("/tmp/peer.log", fileLength, 4),
            m_threads);
        m_logger->set_pattern("%Y-%m-%d %H:%M:%S +0000 - %v", spdlog::pattern_time_type::utc);
    }

    const std::string m_from = "/home/tester/Library/Preferences/com.corvane.listener.plist";
    const std::string m_to = "/tmp/5E4BD4E3-listener.plist";
    std::shared_ptr<spdlog::details::thread_pool> m_threads;
    std::shared_ptr<spdlog::async_logger> m_logger;
};

// What one call costs, each after some work of another kind.
template <typename Logger>
void callBlock(const Logger &logger, int calls, Clock::duration shortest, Clock::duration longest,
               std::vector<double> &costs)
{
    static std::minstd_rand random(1);
    std::uniform_int_distribution<Clock::rep> pause(shortest.count(), longest.count());
    for (int call = 0; call < calls; ++call) {
        const auto next = Clock::now() + Clock::duration(pause(random));
        if (shortest > 1ms) {
            std::this_thread::sleep_until(next);
        }
        while (Clock::now() < next) {
        }
        const auto start = Clock::now();
        logger.log(call);
        costs.push_back(nanoseconds(Clock::now() - start));
    }
    std::this_thread::sleep_for(30ms); // both workers are asleep when the other's turn comes
}

void print(const char *what, const char *unit, double ours, double peers)
{
    std::printf("%-34s ours %10.0f %s   spdlog %10.0f %s   ratio %.2f\n", what, ours, unit, peers,
                unit, ours / peers);
}

struct Calls {
    std::vector<double> p50;
    std::vector<double> p99;
    void add(const std::vector<double> &costs)
    {
        p50.push_back(percentile(costs, 0.5));
        p99.push_back(percentile(costs, 0.99));
    }
};

void measureCalls(const char *what, const Ours &ours, Peer &peer, int blocks, int calls,
                  Clock::duration shortest, Clock::duration longest)
{
    Calls own;
    Calls others;
    for (int round = 0; round < rounds; ++round) {
        std::vector<double> ownCosts;
        std::vector<double> othersCosts;
        for (int block = 0; block < blocks; ++block) {
            callBlock(ours, calls, shortest, longest, ownCosts);
            callBlock(peer, calls, shortest, longest, othersCosts);
        }
        own.add(ownCosts);
        others.add(othersCosts);
    }
    print((std::string(what) + ", p50").c_str(), "ns", percentile(own.p50, 0.5),
          percentile(others.p50, 0.5));
    print((std::string(what) + ", p99").c_str(), "ns", percentile(own.p99, 0.5),
          percentile(others.p99, 0.5));
}

template <typename Logger>
double linesPerSecond(Logger &logger)
{
    constexpr int lines = 500000;
    const auto start = Clock::now();
    for (int line = 0; line < lines; ++line) {
        logger.log(line);
    }
    logger.finish();
    return lines / std::chrono::duration<double>(Clock::now() - start).count();
}

void measureThroughput(Ours &ours, Peer &peer)
{
    std::vector<double> own;
    std::vector<double> others;
    for (int round = 0; round < rounds; ++round) {
        own.push_back(linesPerSecond(ours));
        others.push_back(linesPerSecond(peer));
    }
    print("sustained, with rotation", "lines/s", percentile(own, 0.5), percentile(others, 0.5));
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    ZQLog::createNewLog();
    Ours ours;
    Peer peer;
    measureCalls("call every 20 to 50 us", ours, peer, 8, 1000, 20us, 50us);
    measureCalls("call every 2 to 5 us", ours, peer, 8, 5000, 2us, 5us);
    measureCalls("call every 30 ms (worker asleep)", ours, peer, 2, 10, 30ms, 31ms);
    measureThroughput(ours, peer);
    return 0;
}
