// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/SpawnProgram.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace {

// The program at the path with these arguments and nothing else of ours. 0, or the error number.
int start(const QByteArray &path, const QList<QByteArray> &arguments,
          const std::array<int, 3> &streams, pid_t *process)
{
    std::vector<std::string> words{path.toStdString()};
    for (const auto &argument : arguments) {
        words.push_back(argument.toStdString());
    }
    return platform::spawnProgram(
        {path.toStdString(), std::move(words), platform::cleanEnvironment(), streams}, process);
}

// What the program writes to standard output; its end is waited for.
QByteArray outputOf(const QByteArray &path, const QList<QByteArray> &arguments,
                    int input = platform::nullDevice)
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return "no pipe";
    }
    const platform::Descriptor reading(ends[0]);
    platform::Descriptor writing(ends[1]);
    pid_t process = -1;
    start(path, arguments, {input, writing.fd(), platform::nullDevice}, &process);
    writing.close();
    QByteArray output;
    std::array<char, 4096> buffer{};
    for (ssize_t size = 1; size > 0;) {
        size = ::read(reading.fd(), buffer.data(), buffer.size());
        output.append(buffer.data(), static_cast<int>(size));
    }
    ::waitpid(process, nullptr, 0);
    return output;
}

} // namespace

class CleanProcessTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theEnvironmentIsTheSameForEverybody();
    void noDescriptorButTheStandardOnesIsInherited();
    void signalsAreAsTheyWereAtFirst();
    void argumentsAreAnyBytes();
    void streamsThatAreNotGivenAreTheNullDevice();
    void closedStandardDescriptorsDoNoHarm();
    void aProgramThatIsMissingGivesTheSystemsError();
};

void CleanProcessTest::theEnvironmentIsTheSameForEverybody()
{
    const test::EnvironmentVariable path("PATH", "/tmp");
    const test::EnvironmentVariable preload("LD_PRELOAD", "/nowhere.so");
    const test::EnvironmentVariable language("LANG", "de_DE.UTF-8");
    QCOMPARE(outputOf("/usr/bin/env", {}),
             QByteArray("PATH=/usr/sbin:/usr/bin:/sbin:/bin\nLANG=C.UTF-8\n"));
}

void CleanProcessTest::noDescriptorButTheStandardOnesIsInherited()
{
    const platform::Descriptor open(::open("/", O_RDONLY)); // NOLINT: it is to be inheritable
    QVERIFY(open.isOpen());
    QCOMPARE(outputOf("/bin/ls", {"/proc/self/fd"}), QByteArray("0\n1\n2\n3\n")); // 3 is its own
}

void CleanProcessTest::signalsAreAsTheyWereAtFirst()
{
    std::signal(SIGTERM, SIG_IGN);
    std::signal(SIGUSR2, SIG_IGN);
    sigset_t blocked;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    const auto status = outputOf("/bin/cat", {"/proc/self/status"});
    std::signal(SIGTERM, SIG_DFL);
    ::pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    QVERIFY(status.contains("SigBlk:\t0000000000000000"));
    const auto ignored = status.mid(status.indexOf("SigIgn:\t") + 8, 16).toULongLong(nullptr, 16);
    QCOMPARE(ignored & 0x7FFFFFFFULL, 0ULL); // the C library keeps two above for itself
}

void CleanProcessTest::argumentsAreAnyBytes()
{
    for (const QByteArray text : {"", "-n", "a b", "\xFF\xFE", "line\nbreak", "%s", "'\"`$(id)"}) {
        QCOMPARE(outputOf("/usr/bin/printf", {"%s", text}), text);
    }
}

void CleanProcessTest::streamsThatAreNotGivenAreTheNullDevice()
{
    QCOMPARE(outputOf("/bin/sh", {"-c", "readlink /proc/$$/fd/0 /proc/$$/fd/2"}),
             QByteArray("/dev/null\n/dev/null\n"));
}

void CleanProcessTest::closedStandardDescriptorsDoNoHarm()
{
    // The copies then get the numbers that are to be overwritten.
    const platform::Descriptor input(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 10));
    const platform::Descriptor error(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 10));
    ::close(STDIN_FILENO);
    ::close(STDERR_FILENO);
    const auto output = outputOf("/bin/sh", {"-c", "readlink /proc/$$/fd/0 /proc/$$/fd/2"});
    ::dup2(input.fd(), STDIN_FILENO);
    ::dup2(error.fd(), STDERR_FILENO);
    QCOMPARE(output, QByteArray("/dev/null\n/dev/null\n"));
}

void CleanProcessTest::aProgramThatIsMissingGivesTheSystemsError()
{
    pid_t process = -1;
    QCOMPARE(start("/bin/nobody-has-this", {}, {-1, -1, -1}, &process), ENOENT);
    QCOMPARE(start("/etc/passwd", {}, {-1, -1, -1}, &process), EACCES);
    QCOMPARE(start("/bin/true", {}, {999, -1, -1}, &process), EBADF);
}

TEST_CLASS(CleanProcessTest, QCoreApplication)
#include "CleanProcessTest.moc"
