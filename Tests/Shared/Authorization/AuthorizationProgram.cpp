// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
//
// Does with the authorisation what its standard input says, for tests that look on from outside:
// one command a line, its words percent-encoded, and one line of answer each, "= " in front. A
// command after
// "--once" is carried out alone.

#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Text/FileName.h"
#include "Shared/Authorization/ZQAuthorization.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {

ZQAuthorization &authorization()
{
    return ZQAuthorization::sharedController();
}

QByteArray yesOrNo(bool value)
{
    return value ? "yes" : "no";
}

QByteArray readAll(const platform::Descriptor &descriptor)
{
    QByteArray bytes;
    std::array<char, 4096> buffer{};
    for (ssize_t size = 1; size > 0;) {
        size = ::read(descriptor.fd(), buffer.data(), buffer.size());
        bytes.append(buffer.data(), static_cast<int>(std::max<ssize_t>(size, 0)));
    }
    return bytes;
}

// The status and what the tool has written.
QByteArray runTool(const QStringList &words)
{
    const auto reference = authorization().authRef();
    if (reference == nullptr) {
        return "none";
    }
    const auto tool =
        reference->run(words.first(), words.mid(1), platform::Authorization::Output::Wanted);
    const auto output = tool.output.isOpen() ? readAll(tool.output) : QByteArray();
    return QByteArray::number(static_cast<std::int32_t>(tool.status)) + ' ' +
           output.toPercentEncoding(" ");
}

// Many threads at a time, each with an output of its own; how many got the right one.
QByteArray runToolsAtOnce(int threads)
{
    std::atomic<int> right = 0;
    std::vector<std::thread> workers;
    workers.reserve(static_cast<std::size_t>(threads));
    for (int i = 0; i < threads; ++i) {
        workers.emplace_back([i, &right] {
            const auto answer =
                runTool({QStringLiteral("/bin/echo"), QStringLiteral("number%1").arg(i)});
            right += answer == "0 number" + QByteArray::number(i) + "%0A" ? 1 : 0;
        });
    }
    for (auto &worker : workers) {
        worker.join();
    }
    return QByteArray::number(right.load());
}

// Lets a child program of this one carry out the command; the child answers itself.
QByteArray handDown(const QStringList &words)
{
    const auto reference = authorization().authRef();
    if (reference == nullptr) {
        return "none";
    }
    auto inheritance = reference->handDown();
    std::vector<QByteArray> arguments{"/proc/self/exe", "--once"};
    arguments.reserve(arguments.size() + static_cast<std::size_t>(words.size()));
    for (const auto &word : words) {
        arguments.push_back(platform::fileNameBytes(word).toPercentEncoding());
    }
    std::vector<char *> pointers;
    pointers.reserve(arguments.size() + 1);
    for (auto &argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    std::array<char *, 2> environment{inheritance.environmentEntry.data(), nullptr};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    const int number = inheritance.descriptor.fd();
    ::posix_spawn_file_actions_adddup2(&actions, number, number);
    pid_t child = -1;
    ::posix_spawn(&child, "/proc/self/exe", &actions, nullptr, pointers.data(), environment.data());
    ::posix_spawn_file_actions_destroy(&actions);
    inheritance.descriptor.close();
    reference->nameChild(child, std::move(inheritance));
    int status = 0;
    ::waitpid(child, &status, 0);
    return QByteArray::number(WEXITSTATUS(status));
}

// From a thread that has ended when the answer comes.
QByteArray startOnWorker()
{
    bool isStarted = false;
    std::thread([&isStarted] { isStarted = authorization().authStart(); }).join();
    return yesOrNo(isStarted);
}

// From many threads at a time; how many got it.
QByteArray startAtOnce(int threads)
{
    std::atomic<int> started = 0;
    std::vector<std::thread> workers;
    workers.reserve(static_cast<std::size_t>(threads));
    for (int i = 0; i < threads; ++i) {
        workers.emplace_back([&started] { started += authorization().authStart() ? 1 : 0; });
    }
    for (auto &worker : workers) {
        worker.join();
    }
    return QByteArray::number(started.load());
}

// Threads that start tools while another ends and renews the authorisation; whatever they get, all
// come to an end.
QByteArray renewWhileToolsRun()
{
    std::atomic<bool> isDone = false;
    std::vector<std::thread> workers;
    workers.reserve(4);
    for (int i = 0; i < 4; ++i) {
        workers.emplace_back([&isDone] {
            while (!isDone) {
                authorization().authExecTask(QStringLiteral("/bin/true"), {}, Async::No);
            }
        });
    }
    for (int i = 0; i < 5; ++i) {
        authorization().authEnd();
        authorization().authStart();
    }
    isDone = true;
    for (auto &worker : workers) {
        worker.join();
    }
    return yesOrNo(authorization().isAuthorized());
}

// A thread that only waits, for somebody to trace.
QByteArray idleThread()
{
    std::thread([] {
        for (;;) {
            ::pause();
        }
    }).detach();
    return "done";
}

// Tells this process's number and waits for a line; for a child program that is looked at
// meanwhile.
QByteArray hold()
{
    authorization();
    platform::printLine(QStringLiteral("= %1").arg(::getpid()));
    std::string line;
    std::getline(std::cin, line);
    return "done";
}

// How often the readable memory of this process has these bytes, each of them one less here so that
// they are not found themselves. Reads itself as a stranger would: what is not there is no crash.
int copiesInMemory(const QByteArray &lessened)
{
    static std::array<char, 1024 * 1024> buffer{};
    const auto size = static_cast<std::size_t>(lessened.size());
    const auto isCopy = [&lessened, size](const char *bytes) {
        for (std::size_t i = 0; i < size; ++i) {
            if (bytes[i] != static_cast<char>(lessened.at(static_cast<int>(i)) + 1)) {
                return false;
            }
        }
        return true;
    };
    int copies = 0;
    std::ifstream maps("/proc/self/maps");
    const auto own = reinterpret_cast<std::uintptr_t>(buffer.data());
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx", &begin, &end) != 2) {
            continue;
        }
        // The pieces overlap, so that none hides a copy.
        for (auto from = begin; from + size <= end; from += buffer.size() - size + 1) {
            iovec to{buffer.data(), std::min(buffer.size(), end - from)};
            iovec source{reinterpret_cast<void *>(from), to.iov_len};
            const auto read = ::process_vm_readv(::getpid(), &to, 1, &source, 1, 0);
            for (std::size_t i = 0; read > 0 && i + size <= static_cast<std::size_t>(read); ++i) {
                const bool isBuffer = from + i + size > own && from + i < own + buffer.size();
                copies += !isBuffer && isCopy(buffer.data() + i) ? 1 : 0;
            }
        }
    }
    return copies;
}

// authStartWithUser: with a password of which each character came one less; the answer, and how
// many copies of the password there are then, in UTF-8 and in the caller's UTF-16.
QByteArray copiesAfterStartWith(const QStringList &words)
{
    const auto lessened = words.at(1);
    QString password(lessened.size(), Qt::Uninitialized);
    QByteArray wide;
    for (int i = 0; i < lessened.size(); ++i) {
        const auto unit = lessened.at(i).unicode();
        password[i] = QChar(static_cast<char16_t>(unit + 1));
        wide += static_cast<char>(unit);
        wide += '\xff';
    }
    const auto isStarted = authorization().authStartWithUser(words.first(), password);
    return yesOrNo(isStarted) + ' ' + QByteArray::number(copiesInMemory(lessened.toLatin1())) +
           ' ' + QByteArray::number(copiesInMemory(wide));
}

using Command = std::function<QByteArray(const QStringList &words)>;

Command onPath(bool (ZQAuthorization::*operation)(const QString &))
{
    return [operation](const QStringList &words) {
        return yesOrNo((authorization().*operation)(words.first()));
    };
}

Command onPaths(bool (ZQAuthorization::*operation)(const QString &, const QString &))
{
    return [operation](const QStringList &words) {
        return yesOrNo((authorization().*operation)(words.first(), words.at(1)));
    };
}

Command execTask(Async async)
{
    return [async](const QStringList &words) {
        return QByteArray::number(authorization().authExecTask(words.first(), words.mid(1), async));
    };
}

// Commands for a process of root's that was an ordinary user's at first.
QByteArray become(const QStringList &words)
{
    const auto user = words.first().toUInt();
    return yesOrNo(::setresuid(user, user, 0) == 0);
}

const std::map<QString, Command> &commands()
{
    static const std::map<QString, Command> all{
        {QStringLiteral("start"),
         [](const QStringList &) { return yesOrNo(authorization().authStart()); }},
        {QStringLiteral("start-on-worker"), [](const QStringList &) { return startOnWorker(); }},
        {QStringLiteral("start-with"), onPaths(&ZQAuthorization::authStartWithUser)},
        {QStringLiteral("end"),
         [](const QStringList &) {
             authorization().authEnd();
             return QByteArray("done");
         }},
        {QStringLiteral("authorized"),
         [](const QStringList &) { return yesOrNo(authorization().isAuthorized()); }},
        {QStringLiteral("gui"),
         [](const QStringList &words) {
             authorization().setHasGUI(words.first() == QStringLiteral("yes"));
             return QByteArray("done");
         }},
        {QStringLiteral("remove"), onPath(&ZQAuthorization::authRemoveFile)},
        {QStringLiteral("trash"),
         [](const QStringList &words) {
             return yesOrNo(authorization().authTrashFile(words.first()));
         }},
        {QStringLiteral("trash-contents"),
         [](const QStringList &words) {
             return yesOrNo(authorization().authTrashFolderContents(words.first()));
         }},
        {QStringLiteral("create"), onPath(&ZQAuthorization::authCreateDir)},
        {QStringLiteral("move"), onPaths(&ZQAuthorization::authMoveFile)},
        {QStringLiteral("copy"), onPaths(&ZQAuthorization::authCopyFile)},
        {QStringLiteral("move-contents"), onPaths(&ZQAuthorization::authMoveFolderContents)},
        {QStringLiteral("exec"), execTask(Async::Yes)},
        {QStringLiteral("exec-wait"), execTask(Async::No)},
        {QStringLiteral("run"), runTool},
        {QStringLiteral("run-at-once"),
         [](const QStringList &words) { return runToolsAtOnce(words.first().toInt()); }},
        {QStringLiteral("start-at-once"),
         [](const QStringList &words) { return startAtOnce(words.first().toInt()); }},
        {QStringLiteral("renew-while-tools-run"),
         [](const QStringList &) { return renewWhileToolsRun(); }},
        {QStringLiteral("hand-down"), handDown},
        {QStringLiteral("become"), become},
        {QStringLiteral("idle-thread"), [](const QStringList &) { return idleThread(); }},
        {QStringLiteral("hold"), [](const QStringList &) { return hold(); }},
        {QStringLiteral("copies-after-start-with"), copiesAfterStartWith},
    };
    return all;
}

void carryOut(const QList<QByteArray> &encodedWords)
{
    QStringList words;
    for (const auto &word : encodedWords) {
        words += platform::fileNameFromBytes(QByteArray::fromPercentEncoding(word));
    }
    const auto command = commands().find(words.takeFirst());
    const auto answer = command != commands().end() ? command->second(words) : "unknown command";
    platform::printLine(QStringLiteral("= ") + QString::fromUtf8(answer));
}

} // namespace

int main(int count, char **values)
{
    const std::vector<QByteArray> arguments(values + 1, values + count);
    if (!arguments.empty() && arguments.front() == "--once") {
        carryOut(QList<QByteArray>(arguments.begin() + 1, arguments.end()));
        return 0;
    }
    for (std::string line; std::getline(std::cin, line);) {
        carryOut(QByteArray::fromStdString(line).split(' '));
    }
    return 0;
}
