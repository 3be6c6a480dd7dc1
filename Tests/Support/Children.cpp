// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/Children.h"

#include "Platform/Core/Text/FileName.h"

#include <QDir>
#include <QTimer>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace test {
namespace {

int entries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

} // namespace

bool becomesTrue(const std::function<bool()> &condition)
{
    for (int i = 0; i < 30000; ++i) {
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

std::unique_ptr<platform::ChildProcess> shell(const QString &script)
{
    auto process = std::make_unique<platform::ChildProcess>();
    process->setLaunchPath(QStringLiteral("/bin/sh"));
    process->setArguments({QStringLiteral("-c"), script});
    return process;
}

void waitInEventLoop()
{
    const auto process = shell(text("exec sleep 60"));
    process->launch();
    QTimer::singleShot(0, [&] { process->terminate(); });
    process->waitUntilExit();
}

void makeExecutable(const QString &path, const QByteArray &contents)
{
    const auto name = platform::fileNameBytes(path);
    const int file = ::open(name.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const auto size = static_cast<std::size_t>(contents.size());
    if (file < 0 || ::write(file, contents.constData(), size) != contents.size() ||
        ::fchmod(file, 0755) != 0) {
        qFatal("cannot write %s", name.constData());
    }
    ::close(file);
}

bool hasNoChildren()
{
    siginfo_t child{};
    return ::waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) != 0 && errno == ECHILD;
}

bool losesItsChildren()
{
    return becomesTrue(hasNoChildren);
}

int openDescriptors()
{
    return entries(QStringLiteral("/proc/self/fd"));
}

int threads()
{
    return entries(QStringLiteral("/proc/self/task"));
}

bool appears(const QString &path)
{
    return becomesTrue([&] { return QFile::exists(path); });
}

} // namespace test
