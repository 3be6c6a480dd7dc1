// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// A program with a log, for tests of what happens once in a process or at its end. Each argument is
// a command, with a value behind "=".
#include "Platform/Core/Text/Console.h"
#include "Shared/Log/ZQLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QTimer>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <functional>
#include <map>
#include <thread>

namespace {

using namespace std::chrono_literals;

// Makes standard output a pipe that nobody reads, with room for the first line about one lost entry
// "first". So the log's thread stays in the second line.
class StuckOutput {
public:
    StuckOutput()
    {
        constexpr int capacity = 4096;
        const QByteArray firstLine("Unable to log the following information: first\n");
        if (::pipe2(m_ends.data(), O_CLOEXEC) != 0 ||
            ::fcntl(m_ends[1], F_SETPIPE_SZ, capacity) != capacity) {
            qFatal("no pipe");
        }
        const QByteArray filling(capacity - firstLine.size(), ' ');
        m_filled = static_cast<int>(
            ::write(m_ends[1], filling.constData(), static_cast<std::size_t>(filling.size())));
        ::dup2(m_ends[1], STDOUT_FILENO);
    }

    void waitUntilStuck() const
    {
        for (int waiting = 0; waiting <= m_filled; std::this_thread::sleep_for(1ms)) {
            ::ioctl(m_ends[0], FIONREAD, &waiting);
        }
    }

    void release()
    {
        m_released = true;
        std::thread([input = m_ends[0]] {
            std::array<char, 4096> buffer{};
            while (::read(input, buffer.data(), buffer.size()) > 0) {
            }
        }).detach();
    }

    bool isReleased() const { return m_released; }

private:
    std::atomic<bool> m_released = false;
    std::array<int, 2> m_ends{};
    int m_filled = 0;
};

StuckOutput &stuckOutput()
{
    static auto *output = new StuckOutput;
    return *output;
}

void createFile()
{
    QDir().mkpath(QDir::homePath() + QStringLiteral("/Library/Logs/Corvane"));
    QFile file(QDir::homePath() + QStringLiteral("/Library/Logs/Corvane/LogProgram.1.log"));
    if (!file.open(QIODevice::WriteOnly)) {
        qFatal("no file");
    }
}

// No file may grow beyond this size in bytes; 0: no limit.
void limitFiles(rlim_t size)
{
    ::signal(SIGXFSZ, SIG_DFL);
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = size == 0 ? limit.rlim_max : size;
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

// Whether this is a child that was forked and ends itself.
std::atomic<bool> inChild = false;

// In a child that is forked and ends itself. Waits for its end.
void logInChild(const QString &text, void (*end)(int))
{
    const auto child = ::fork();
    if (child == 0) {
        inChild = true;
        ZQLog::appendLog(text);
        end(0);
    }
    auto status = -1;
    ::waitpid(child, &status, 0);
    if (status != 0) {
        qWarning("the child ended with %d", status);
        std::_Exit(4);
    }
}

// The same many times, while other threads log all the time.
void logInBusyChild(const QString &text)
{
    std::atomic<bool> isOver = false;
    std::array<std::thread, 2> threads;
    for (auto &thread : threads) {
        thread = std::thread([&] {
            // No faster than the log writes: what the last children wrote would be rotated away.
            while (!isOver) {
                if (ZQLog::sharedController().bytesInQueue() > 10000) {
                    std::this_thread::yield();
                    continue;
                }
                ZQLog::appendLog(QStringLiteral("busy"));
                ZQLog::fastAppendLog(QStringLiteral("busy"));
            }
        });
    }
    for (auto i = 0; i < 50; ++i) {
        logInChild(text, std::exit);
    }
    isOver = true;
    for (auto &thread : threads) {
        thread.join();
    }
}

void printState()
{
    const auto &log = ZQLog::sharedController();
    platform::printLine(platform::format(
        QStringLiteral("queue %qu written %qu disabled %i name %@"), log.bytesInQueue(),
        log.bytesWritten(), log.loggingDisabled(), log.appName()));
}

using Command = std::function<void(const QString &)>;

const std::map<QString, Command> &commands()
{
    static const std::map<QString, Command> all{
        {QStringLiteral("new"), [](const QString &name) { ZQLog::createNewLog(name); }},
        {QStringLiteral("append"), [](const QString &text) { ZQLog::appendLog(text); }},
        {QStringLiteral("fast"), [](const QString &text) { ZQLog::fastAppendLog(text); }},
        {QStringLiteral("print"), [](const QString &text) { ZQLog::appendLogAndPrint(text); }},
        {QStringLiteral("thread"),
         [](const QString &text) { std::thread([&] { ZQLog::appendLog(text); }).join(); }},
        {QStringLiteral("letters"),
         [](const QString &count) {
             ZQLog::fastAppendLog(QString(count.toInt(), QLatin1Char('x')));
         }},
        {QStringLiteral("lines"),
         [](const QString &count) {
             for (int line = 1; line <= count.toInt(); ++line) {
                 ZQLog::fastAppendLog(QStringLiteral("line %i"), line);
             }
         }},
        {QStringLiteral("finish"), [](const QString &) { ZQLog::finishWriting(); }},
        {QStringLiteral("state"), [](const QString &) { printState(); }},
        {QStringLiteral("stick-output"), [](const QString &) { stuckOutput(); }},
        {QStringLiteral("wait-until-stuck"),
         [](const QString &) { stuckOutput().waitUntilStuck(); }},
        {QStringLiteral("release"), [](const QString &) { stuckOutput().release(); }},
        {QStringLiteral("release-later"),
         [](const QString &) {
             std::thread([] {
                 std::this_thread::sleep_for(200ms);
                 stuckOutput().release();
             }).detach();
         }},
        {QStringLiteral("check-released"),
         [](const QString &) {
             if (!stuckOutput().isReleased()) {
                 std::_Exit(3);
             }
         }},
        {QStringLiteral("fast-on-thread"),
         [](const QString &text) { std::thread([&] { ZQLog::fastAppendLog(text); }).join(); }},
        {QStringLiteral("finish-main"), [](const QString &) {}}, // main returns anyway
        {QStringLiteral("remove-preferences"),
         [](const QString &) {
             QFile::remove(QDir::homePath() +
                           QStringLiteral("/Library/Preferences/com.corvane.global.plist"));
         }},
        {QStringLiteral("create-file"), [](const QString &) { createFile(); }},
        {QStringLiteral("limit"), [](const QString &size) { limitFiles(size.toULong()); }},
        {QStringLiteral("throw"),
         [](const QString &reason) { throw platform::Exception(QStringLiteral("Name"), reason); }},
        {QStringLiteral("throw-on-thread"),
         [](const QString &reason) {
             std::thread([&] { throw platform::Exception(QStringLiteral("Name"), reason); }).join();
         }},
        {QStringLiteral("quit"),
         [](const QString &) {
             QTimer::singleShot(0, QCoreApplication::instance(), &QCoreApplication::quit);
             QCoreApplication::exec();
         }},
        // Without what runs at the end, such as a leak checker, which needs "/proc".
        {QStringLiteral("leave"),
         [](const QString &) {
             ZQLog::finishWriting();
             std::_Exit(0);
         }},
        {QStringLiteral("exit"), [](const QString &) { std::exit(0); }},
        {QStringLiteral("child"), [](const QString &text) { logInChild(text, std::exit); }},
        {QStringLiteral("short-child"), [](const QString &text) { logInChild(text, std::_Exit); }},
        {QStringLiteral("busy-child"), [](const QString &text) { logInBusyChild(text); }},
        {QStringLiteral("exit-on-thread"),
         [](const QString &) { std::thread([] { std::exit(0); }).join(); }},
    };
    return all;
}

} // namespace

#ifdef __SANITIZE_ADDRESS__
// A child has none of its parent's other threads: what they held counts as leaked in it.
extern "C" __attribute__((visibility("default"))) int
__lsan_is_turned_off() // NOLINT(*-reserved-identifier,*-dcl37-c,*-dcl51-cpp)
{
    return inChild ? 1 : 0;
}
#endif

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    for (const auto &argument : QCoreApplication::arguments().mid(1)) {
        const auto equals = argument.indexOf(QLatin1Char('='));
        const auto value = equals < 0 ? QString() : argument.mid(equals + 1);
        commands().at(argument.left(equals))(value);
    }
    return 0;
}
