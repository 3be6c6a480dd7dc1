// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/ChildProcess.h"

#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Files/ReadToEnd.h"
#include "Platform/Core/Text/FileName.h"
#include "Tests/Support/Children.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QFile>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

using platform::ChildProcess;
using Stream = ChildProcess::Stream;
using test::text;

class ChildProcessTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theExitStatusIsTold();
    void aDeathBySignalTellsTheSignal();
    void whatCannotBeLaunchedSaysWhy_data();
    void whatCannotBeLaunchedSaysWhy();
    void aFailedLaunchLeavesNothingOpenAndCanBeTriedAgain();
    void aCommandIsLaunchedOnce();
    void nothingButTheLaunchIsPossibleBeforeIt();
    void theStatusOfARunningCommandIsRefused();
    void terminatingWhatHasEndedDoesNothing();
    void argumentsAndPathAreAnyBytes();
    void aNullCharacterIsRefused();
    void theEnvironmentIsInheritedUnlessOneIsGiven();
    void anEnvironmentOfAnyBytesReplacesTheInheritedOne();
    void aNameThatNoVariableCanHaveIsRefused();
    void standardInputIsAPipeToWriteTo();
    void theNullDeviceGivesNothingAndTakesAll();
    void theCommandHasNoOtherDescriptor();
    void theCommandHasNoSignalBlockedOrIgnored();
    void closedStandardStreamsOfThisProcessDoNotMixUpTheCommands();
    void theFileToExecuteMayDifferFromThePath();
};

namespace {

QByteArray outputOf(const QStringList &arguments,
                    const std::optional<ChildProcess::Environment> &environment = {})
{
    ChildProcess process;
    process.setLaunchPath(text("/bin/sh"));
    process.setArguments(arguments);
    process.setStandardOutput(Stream::Pipe);
    if (environment.has_value()) {
        process.setEnvironment(*environment);
    }
    process.launch();
    auto output = platform::readToEnd(process.standardOutput().fd());
    process.waitUntilExit();
    return output;
}

QString reasonOf(ChildProcess &process)
{
    try {
        process.launch();
    } catch (const platform::Exception &exception) {
        return exception.name() == text("NSInvalidArgumentException") ? exception.reason()
                                                                      : exception.name();
    }
    return text("launched");
}

template <typename Call>
QString reasonOf(Call call)
{
    try {
        call();
    } catch (const platform::Exception &exception) {
        return exception.reason();
    }
    return {};
}

} // namespace

void ChildProcessTest::theExitStatusIsTold()
{
    for (const int status : {0, 1, 42, 255}) {
        const auto process = test::shell(text("exit %1").arg(status));
        process->launch();
        process->waitUntilExit();
        QVERIFY(!process->isRunning());
        QCOMPARE(process->terminationStatus(), status);
    }
}

void ChildProcessTest::aDeathBySignalTellsTheSignal()
{
    for (const int signal : {SIGTERM, SIGKILL, SIGHUP}) {
        const auto process = test::shell(text("kill -%1 $$").arg(signal));
        process->launch();
        process->waitUntilExit();
        QCOMPARE(process->terminationStatus(), signal);
    }
}

void ChildProcessTest::whatCannotBeLaunchedSaysWhy_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("reason");
    QTest::newRow("missing") << text("/tmp/missing") << QStringList()
                             << text("No such file or directory");
    QTest::newRow("nothing") << QString() << QStringList() << text("No such file or directory");
    QTest::newRow("folder") << text("/tmp") << QStringList() << text("Permission denied");
    QTest::newRow("no program") << text("/tmp/no-program") << QStringList()
                                << text("Exec format error");
    QTest::newRow("too long") << text("/bin/true")
                              << QStringList(QString(1 << 20, QLatin1Char('x')))
                              << text("Argument list too long");
}

void ChildProcessTest::whatCannotBeLaunchedSaysWhy()
{
    QFETCH(QString, path);
    QFETCH(QStringList, arguments);
    QFETCH(QString, reason);
    test::makeExecutable(text("/tmp/no-program"), "\x7F"
                                                  "not a program");
    ChildProcess process;
    process.setLaunchPath(path);
    process.setArguments(arguments);
    QCOMPARE(reasonOf(process), reason);
    QVERIFY(!process.isRunning());
    QVERIFY(test::hasNoChildren());
}

void ChildProcessTest::aFailedLaunchLeavesNothingOpenAndCanBeTriedAgain()
{
    ChildProcess process;
    process.setLaunchPath(text("/tmp/later"));
    process.setStandardInput(Stream::Pipe);
    process.setStandardOutput(Stream::Pipe);
    process.setStandardError(Stream::NullDevice);
    const auto before = test::openDescriptors();
    QCOMPARE(reasonOf(process), text("No such file or directory"));
    QCOMPARE(test::openDescriptors(), before);
    QVERIFY(!process.standardOutput().isOpen());
    test::makeExecutable(text("/tmp/later"), "#!/bin/sh\nexit 3\n");
    process.launch();
    process.waitUntilExit();
    QCOMPARE(process.terminationStatus(), 3);
}

void ChildProcessTest::aCommandIsLaunchedOnce()
{
    const auto process = test::shell(text("exit 5"));
    process->launch();
    QCOMPARE(reasonOf(*process), text("task already launched"));
    process->waitUntilExit();
    QCOMPARE(reasonOf(*process), text("task already launched"));
    QCOMPARE(process->terminationStatus(), 5);
}

void ChildProcessTest::nothingButTheLaunchIsPossibleBeforeIt()
{
    const auto process = test::shell(text("exit 5"));
    QVERIFY(!process->isRunning());
    process->reapInBackground();
    const auto reason = text("task not launched");
    QCOMPARE(reasonOf([&] { process->waitUntilExit(); }), reason);
    QCOMPARE(reasonOf([&] { process->terminate(); }), reason);
    QCOMPARE(reasonOf([&] { process->terminationStatus(); }), reason);
    QCOMPARE(reasonOf([&] { process->processIdentifier(); }), reason);
}

void ChildProcessTest::theStatusOfARunningCommandIsRefused()
{
    const auto process = test::shell(text("exec sleep 60"));
    process->launch();
    QVERIFY(process->isRunning());
    QCOMPARE(reasonOf([&] { process->terminationStatus(); }), text("task still running"));
    process->terminate();
    process->waitUntilExit();
    QCOMPARE(process->terminationStatus(), SIGTERM);
}

void ChildProcessTest::terminatingWhatHasEndedDoesNothing()
{
    const auto process = test::shell(text("exit 6"));
    process->launch();
    process->waitUntilExit();
    process->terminate();
    process->waitUntilExit();
    QCOMPARE(process->terminationStatus(), 6);
}

void ChildProcessTest::argumentsAndPathAreAnyBytes()
{
    const QList<QByteArray> arguments{
        "",      "-n",       "--",           "a b",          "line\nbreak", "\"'`$(x)",
        "100%s", "\xFF\xFE", "\xED\xA0\x80", "\xE2\x82\xAC", "\x01\x7F",    "*"};
    QStringList texts;
    for (const auto &argument : arguments) {
        texts << platform::fileNameFromBytes(argument);
    }
    const auto path = platform::fileNameFromBytes("/tmp/-odd \xFF\n%@ \"name\"");
    test::makeExecutable(path, "#!/bin/sh\nprintf '%s\\0' \"$0\" \"$@\"\n");
    ChildProcess process;
    process.setLaunchPath(path);
    process.setArguments(texts);
    process.setStandardOutput(Stream::Pipe);
    process.launch();
    const auto output = platform::readToEnd(process.standardOutput().fd());
    process.waitUntilExit();
    const auto expected = QList<QByteArray>{platform::fileNameBytes(path)} + arguments;
    QCOMPARE(output.left(output.size() - 1).split('\0'), expected);
}

void ChildProcessTest::aNullCharacterIsRefused()
{
    const QString null = text("a") + QChar(0) + text("b");
    const auto reason = text("A text holds a null character");
    ChildProcess process;
    process.setLaunchPath(text("/bin/true"));
    process.setArguments({null});
    QCOMPARE(reasonOf(process), reason);
    process.setArguments({});
    process.setEnvironment({{text("NAME"), null}});
    QCOMPARE(reasonOf(process), reason);
    ChildProcess other;
    other.setLaunchPath(text("/bin/true") + QChar(0));
    QCOMPARE(reasonOf(other), reason);
}

void ChildProcessTest::theEnvironmentIsInheritedUnlessOneIsGiven()
{
    const test::EnvironmentVariable variable("OSTREL_TEST", "inherited");
    const QStringList script{text("-c"), text("printf %s \"${OSTREL_TEST-none}\"")};
    QCOMPARE(outputOf(script), QByteArray("inherited"));
    QCOMPARE(outputOf(script, ChildProcess::Environment()), QByteArray("none"));
}

void ChildProcessTest::anEnvironmentOfAnyBytesReplacesTheInheritedOne()
{
    ChildProcess::Environment environment{{text("ONE"), platform::fileNameFromBytes("\xFF=\n%@")},
                                          {text("TWO"), text("")}};
    ChildProcess process;
    process.setLaunchPath(text("/usr/bin/env"));
    process.setArguments({text("-0")});
    process.setEnvironment(environment);
    process.setStandardOutput(Stream::Pipe);
    process.launch();
    const auto output = platform::readToEnd(process.standardOutput().fd());
    process.waitUntilExit();
    QCOMPARE(output, QByteArray("ONE=\xFF=\n%@\0TWO=\0", 15));
}

void ChildProcessTest::aNameThatNoVariableCanHaveIsRefused()
{
    for (const auto *name : {"", "a=b", "="}) {
        ChildProcess process;
        process.setLaunchPath(text("/bin/true"));
        process.setEnvironment({{text(name), text("value")}});
        QCOMPARE(reasonOf(process), text("Not the name of a variable: \"%1\"").arg(text(name)));
    }
}

void ChildProcessTest::standardInputIsAPipeToWriteTo()
{
    ChildProcess process;
    process.setLaunchPath(text("/bin/cat"));
    process.setStandardInput(Stream::Pipe);
    process.setStandardOutput(Stream::Pipe);
    process.launch();
    QCOMPARE(::write(process.standardInput().fd(), "some\0text", 9), ssize_t{9});
    process.standardInput().close();
    QCOMPARE(platform::readToEnd(process.standardOutput().fd()), QByteArray("some\0text", 9));
    process.waitUntilExit();
    QCOMPARE(process.terminationStatus(), 0);
}

void ChildProcessTest::theNullDeviceGivesNothingAndTakesAll()
{
    const auto process = test::shell(text("test $(cat | wc -c) = 0 && yes | head -c 300000 && "
                                          "yes | head -c 300000 >&2"));
    process->setStandardInput(Stream::NullDevice);
    process->setStandardOutput(Stream::NullDevice);
    process->setStandardError(Stream::NullDevice);
    process->launch();
    process->waitUntilExit();
    QCOMPARE(process->terminationStatus(), 0);
    QVERIFY(!process->standardOutput().isOpen());
}

void ChildProcessTest::theCommandHasNoOtherDescriptor()
{
    const int careless = ::fcntl(STDERR_FILENO, F_DUPFD, 50); // NOLINT(*-vararg)
    const auto output = outputOf({text("-c"), text("cd /proc/$$/fd && echo *")});
    ::close(careless);
    QVERIFY(careless >= 50);
    QCOMPARE(output, QByteArray("0 1 2 3\n")); // 3 is the folder that the shell reads
}

void ChildProcessTest::theCommandHasNoSignalBlockedOrIgnored()
{
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &before);
    auto *const pipeBefore = ::signal(SIGPIPE, SIG_IGN);
    auto *const hangupBefore = ::signal(SIGHUP, SIG_IGN);
    ChildProcess process;
    process.setLaunchPath(text("/bin/grep"));
    process.setArguments({text("-E"), text("^Sig(Blk|Ign)"), text("/proc/self/status")});
    process.setStandardOutput(Stream::Pipe);
    process.launch();
    ::signal(SIGPIPE, pipeBefore);
    ::signal(SIGHUP, hangupBefore);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    auto output = platform::readToEnd(process.standardOutput().fd());
    process.waitUntilExit();
    // Signals 32 and 33 are the C library's own; an older one has its children ignore them.
    output.replace("0000000180000000", "0000000000000000");
    QCOMPARE(output, QByteArray("SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n"));
}

void ChildProcessTest::closedStandardStreamsOfThisProcessDoNotMixUpTheCommands()
{
    std::array<int, 3> kept{};
    for (int stream = 0; stream < 3; ++stream) {
        kept.at(static_cast<std::size_t>(stream)) = ::fcntl(stream, F_DUPFD_CLOEXEC, 10); // NOLINT
    }
    for (int stream = 0; stream < 3; ++stream) {
        ::close(stream);
    }
    const auto process = test::shell(text("cat; echo error >&2"));
    process->setStandardInput(Stream::Pipe);
    process->setStandardOutput(Stream::Pipe);
    process->setStandardError(Stream::Pipe);
    process->launch();
    const bool areAbove = process->standardInput().fd() > 2 && process->standardOutput().fd() > 2 &&
                          process->standardError().fd() > 2;
    const bool isWritten = ::write(process->standardInput().fd(), "input\n", 6) == 6;
    process->standardInput().close();
    const auto output = platform::readToEnd(process->standardOutput().fd());
    const auto error = platform::readToEnd(process->standardError().fd());
    for (int stream = 0; stream < 3; ++stream) {
        ::dup2(kept.at(static_cast<std::size_t>(stream)), stream);
        ::close(kept.at(static_cast<std::size_t>(stream)));
    }
    process->waitUntilExit();
    QVERIFY(areAbove);
    QVERIFY(isWritten);
    QCOMPARE(output, QByteArray("input\n"));
    QCOMPARE(error, QByteArray("error\n"));
}

void ChildProcessTest::theFileToExecuteMayDifferFromThePath()
{
    ChildProcess process;
    process.setLaunchPath(text("/bin/false"), text("/bin/true"));
    process.launch();
    process.waitUntilExit();
    QCOMPARE(process.terminationStatus(), 0);
    QCOMPARE(process.launchPath(), text("/bin/false"));
    QCOMPARE(process.executable(), text("/bin/true"));
}

TEST_CLASS(ChildProcessTest, QCoreApplication)
#include "ChildProcessTest.moc"
