// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/Console.h"

#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QFile>
#include <QTemporaryFile>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

// Puts another file in the place of standard output or standard error until it is destroyed.
class Redirection {
public:
    Redirection(int standard, int file) : m_standard(standard), m_before(::dup(standard))
    {
        std::fflush(stdout);
        ::dup2(file, standard);
    }
    ~Redirection()
    {
        std::fflush(stdout);
        ::dup2(m_before, m_standard);
        ::close(m_before);
    }
    Redirection(const Redirection &) = delete;
    Redirection &operator=(const Redirection &) = delete;

private:
    int m_standard;
    int m_before;
};

QByteArray printed(const std::function<void()> &action)
{
    QTemporaryFile file;
    file.open();
    {
        const Redirection redirection(STDOUT_FILENO, file.handle());
        action();
    }
    file.seek(0);
    return file.readAll();
}

} // namespace

class ConsoleTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aLineReachesTheSystemLog();
    void aFormattedLineReachesTheSystemLog();
    void anInjectedLineBreakDoesNotMakeTwoLines();
    void controlCharactersAreEscaped();
    void aPercentSignIsNotInterpreted();
    void aVeryLongTextIsCutAndSaysSo();
    void withoutASystemLogNothingHappens();
    void aLineIsAlsoWrittenToATerminal();
    void aLineIsNotWrittenToStandardErrorThatIsNoTerminal();
    void aPrintedLineIsUtf8WithALineBreak();
    void aPrintedLineFollowsWhatWasPrintedBefore();
    void printingToAPipeThatNobodyReadsDoesNotEndTheProgram();
    void linesOfSeveralThreadsStayWhole();
};

void ConsoleTest::aLineReachesTheSystemLog()
{
    test::ConsoleCapture console;
    platform::consoleLine(QStringLiteral("Launching client manually – ü"));
    QCOMPARE(console.lines(), QStringList(QStringLiteral("Launching client manually – ü")));
}

void ConsoleTest::aFormattedLineReachesTheSystemLog()
{
    test::ConsoleCapture console;
    platform::consoleLog(QStringLiteral("Error: %@ is not executable (%d)"), QStringLiteral("/x"),
                         2);
    platform::consoleLog(QStringLiteral("Task timed out. Terminating..."));
    QCOMPARE(console.lines(), QStringList({QStringLiteral("Error: /x is not executable (2)"),
                                           QStringLiteral("Task timed out. Terminating...")}));
}

void ConsoleTest::anInjectedLineBreakDoesNotMakeTwoLines()
{
    test::ConsoleCapture console;
    for (const char *text :
         {"a\nroot: b", "a\r\nb", "a\vb", "a\fb", "a\u0085b", "a\u2028b", "a\u2029b"}) {
        platform::consoleLine(QString::fromUtf8(text));
    }
    QCOMPARE(console.lines(),
             QStringList({QStringLiteral("a\\nroot: b"), QStringLiteral("a\\r\\nb"),
                          QStringLiteral("a\\u000bb"), QStringLiteral("a\\u000cb"),
                          QStringLiteral("a\\u0085b"), QStringLiteral("a\\u2028b"),
                          QStringLiteral("a\\u2029b")}));
}

void ConsoleTest::controlCharactersAreEscaped()
{
    test::ConsoleCapture console;
    platform::consoleLine(QStringLiteral("\x1b[2Jx\ty\x7f%1z").arg(QChar(0)));
    platform::consoleLine(QStringLiteral("\u202Egpj.exe\u2066"));
    QCOMPARE(console.lines(), QStringList({QStringLiteral("\\u001b[2Jx\\ty\\u007f\\u0000z"),
                                           QStringLiteral("\\u202egpj.exe\\u2066")}));
}

void ConsoleTest::aPercentSignIsNotInterpreted()
{
    test::ConsoleCapture console;
    platform::consoleLine(QStringLiteral("100%n %s %@"));
    QCOMPARE(console.lines(), QStringList(QStringLiteral("100%n %s %@")));
}

void ConsoleTest::aVeryLongTextIsCutAndSaysSo()
{
    test::ConsoleCapture console;
    platform::consoleLine(QString(5000000, QChar(u'x')));
    const auto lines = console.lines();
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines.first().startsWith(QString(30000, QChar(u'x'))));
    QVERIFY(lines.first().endsWith(QStringLiteral("x... (5000000 characters)")));
}

void ConsoleTest::withoutASystemLogNothingHappens()
{
    QVERIFY(!QFile::exists(QStringLiteral("/dev/log")));
    platform::consoleLine(QStringLiteral("lost"));
    test::ConsoleCapture console;
    platform::consoleLine(QStringLiteral("kept"));
    QCOMPARE(console.lines(), QStringList(QStringLiteral("kept")));
}

void ConsoleTest::aLineIsAlsoWrittenToATerminal()
{
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    QVERIFY(terminal >= 0 && ::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
    const int screen = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY);
    QVERIFY(screen >= 0);
    {
        const Redirection redirection(STDERR_FILENO, screen);
        platform::consoleLine(QStringLiteral("shown\nhere"));
    }
    std::array<char, 200> buffer{};
    const auto size = ::read(terminal, buffer.data(), buffer.size());
    ::close(screen);
    ::close(terminal);
    QCOMPARE(QByteArray(buffer.data(), static_cast<int>(size)),
             QByteArray("TextTests: shown\\nhere\r\n"));
}

void ConsoleTest::aLineIsNotWrittenToStandardErrorThatIsNoTerminal()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    {
        const Redirection redirection(STDERR_FILENO, file.handle());
        platform::consoleLine(QStringLiteral("not shown"));
    }
    QCOMPARE(file.size(), 0);
}

void ConsoleTest::aPrintedLineIsUtf8WithALineBreak()
{
    QCOMPARE(printed([] { platform::printLine(QStringLiteral("Grüße\nzwei")); }),
             QByteArray("Grüße\nzwei\n"));
    QCOMPARE(printed([] { platform::printLine(QString()); }), QByteArray("\n"));
}

void ConsoleTest::aPrintedLineFollowsWhatWasPrintedBefore()
{
    QCOMPARE(printed([] {
                 std::fputs("first ", stdout);
                 platform::printLine(QStringLiteral("second"));
             }),
             QByteArray("first second\n"));
}

void ConsoleTest::printingToAPipeThatNobodyReadsDoesNotEndTheProgram()
{
    std::array<int, 2> ends{};
    QCOMPARE(::pipe2(ends.data(), O_CLOEXEC), 0);
    ::close(ends[0]);
    {
        const Redirection redirection(STDOUT_FILENO, ends[1]);
        platform::printLine(QStringLiteral("lost"));
    }
    ::close(ends[1]);
    sigset_t pending;
    ::sigpending(&pending);
    QCOMPARE(::sigismember(&pending, SIGPIPE), 0);
    sigset_t blocked;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    QCOMPARE(::sigismember(&blocked, SIGPIPE), 0);
}

void ConsoleTest::linesOfSeveralThreadsStayWhole()
{
    constexpr int threadCount = 4;
    constexpr int lineCount = 200;
    const auto output = printed([] {
        std::vector<std::thread> threads;
        threads.reserve(threadCount);
        for (int number = 0; number < threadCount; ++number) {
            threads.emplace_back([number] {
                const QString line(100, QChar(u'a' + number));
                for (int count = 0; count < lineCount; ++count) {
                    platform::printLine(line);
                }
            });
        }
        for (auto &thread : threads) {
            thread.join();
        }
    });
    const auto lines = output.split('\n');
    QCOMPARE(lines.size(), threadCount * lineCount + 1);
    for (const auto &line : lines.mid(0, lines.size() - 1)) {
        QCOMPARE(line, QByteArray(100, line.at(0)));
    }
}

TEST_CLASS(ConsoleTest, QCoreApplication)
#include "ConsoleTest.moc"
