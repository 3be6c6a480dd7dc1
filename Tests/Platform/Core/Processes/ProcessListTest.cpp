// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/ProcessList.h"

#include "Platform/Core/Basics/RunningExecutable.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <list>

using platform::findProcess;
using platform::ProcessInformation;

namespace {

// All processes that are listed, with the paths of their executables.
QMap<pid_t, QString> listed()
{
    QMap<pid_t, QString> processes;
    findProcess([&](const ProcessInformation &process) {
        processes.insert(process.pid(), QFile::decodeName(process.executable()));
        return false;
    });
    return processes;
}

} // namespace

class ProcessListTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void thisProcessIsListedWithItsFullPath();
    void theWalkEndsAtTheFirstMatch();
    void theExecutableIsAnsweredUnderItsKeyOnly();
    void theBundleNameIsTheOneOfTheInformation();
    void aProgramThatWasDeletedIsListedUnderItsOldPath();
    void aProgramThatWasReplacedIsListedUnderItsOldPath();
    void aProgramThatIsReallyCalledDeletedKeepsItsName();
    void aProcessThatHasEndedIsNotListed();
    void aProcessThatMayNotBeLookedAtIsNotListed();
    void processesThatEndDuringTheWalkDoNoHarm();

private:
    // Runs a copy of a program that does nothing.
    qint64 run(const QString &path);

    QTemporaryDir m_folder;
    std::list<QProcess> m_processes; // ended by their destructors
};

qint64 ProcessListTest::run(const QString &path)
{
    const auto program = m_folder.filePath(path);
    QDir().mkpath(QFileInfo(program).path());
    QFile::remove(program);
    if (!QFile::copy(QStringLiteral("/bin/sleep"), program)) {
        return 0;
    }
    auto &process = m_processes.emplace_back();
    process.start(program, {QStringLiteral("1000")});
    return process.waitForStarted() ? process.processId() : 0;
}

void ProcessListTest::thisProcessIsListedWithItsFullPath()
{
    const auto processes = listed();
    QCOMPARE(processes.value(::getpid()), QCoreApplication::applicationFilePath());
    QCOMPARE(QFile::decodeName(platform::ownExecutable()), QCoreApplication::applicationFilePath());
    for (const auto &path : processes) {
        QVERIFY2(path.startsWith(QLatin1Char('/')), qUtf8Printable(path));
    }
}

void ProcessListTest::theWalkEndsAtTheFirstMatch()
{
    QVERIFY(run(QStringLiteral("other")) != 0);
    QVERIFY(listed().size() >= 2);
    auto visits = 0;
    QVERIFY(findProcess([&](const ProcessInformation &) { return ++visits == 1; }));
    QCOMPARE(visits, 1);
    QVERIFY(!findProcess([](const ProcessInformation &) { return false; }));
}

void ProcessListTest::theExecutableIsAnsweredUnderItsKeyOnly()
{
    QVERIFY(findProcess([](const ProcessInformation &process) {
        return process.pid() == ::getpid() &&
               process.value(QStringLiteral("CFBundleExecutable")) ==
                   QCoreApplication::applicationFilePath() &&
               process.value(QStringLiteral("CFBundleName")).isNull() &&
               process.value(QStringLiteral("kCFBundleNameKey")).isNull() &&
               process.value(QString()).isNull();
    }));
}

void ProcessListTest::theBundleNameIsTheOneOfTheInformation()
{
    const auto key = QStringLiteral("CFBundleName");
    const auto pid = run(QStringLiteral("X.app/Contents/MacOS/N"));
    const auto name = [&] {
        QString found;
        findProcess([&](const ProcessInformation &process) {
            found = process.value(key);
            return process.pid() == pid;
        });
        return found;
    };
    QVERIFY(name().isNull());
    const auto file = m_folder.filePath(QStringLiteral("X.app/Contents/Info.plist"));
    QVERIFY(platform::writeDictionaryToFile({{key, QString::fromUtf8("Größe")}}, file));
    QCOMPARE(name(), QString::fromUtf8("Größe"));
    QVERIFY(platform::writeDictionaryToFile({{key, qlonglong(1)}}, file));
    QVERIFY(name().isNull());
}

void ProcessListTest::aProgramThatWasDeletedIsListedUnderItsOldPath()
{
    const auto program = m_folder.filePath(QStringLiteral("deleted"));
    const auto pid = run(QStringLiteral("deleted"));
    QCOMPARE(listed().value(static_cast<pid_t>(pid)), program);
    QVERIFY(QFile::remove(program));
    QCOMPARE(listed().value(static_cast<pid_t>(pid)), program);
}

void ProcessListTest::aProgramThatWasReplacedIsListedUnderItsOldPath()
{
    const auto program = m_folder.filePath(QStringLiteral("replaced"));
    const auto pid = run(QStringLiteral("replaced"));
    QVERIFY(QFile::remove(program));
    QVERIFY(QFile::copy(QStringLiteral("/bin/sleep"), program));
    // A file of the name that the kernel tells is another one.
    QVERIFY(QFile::copy(QStringLiteral("/bin/sleep"), program + QStringLiteral(" (deleted)")));
    QCOMPARE(listed().value(static_cast<pid_t>(pid)), program);
}

void ProcessListTest::aProgramThatIsReallyCalledDeletedKeepsItsName()
{
    const auto program = m_folder.filePath(QStringLiteral("really (deleted)"));
    const auto pid = run(QStringLiteral("really (deleted)"));
    QCOMPARE(listed().value(static_cast<pid_t>(pid)), program);
    QVERIFY(QFile::remove(program));
    QCOMPARE(listed().value(static_cast<pid_t>(pid)), program);
}

void ProcessListTest::aProcessThatHasEndedIsNotListed()
{
    const auto child = ::fork();
    if (child == 0) {
        ::_exit(0);
    }
    siginfo_t info{};
    QCOMPARE(::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
    QVERIFY(QFileInfo::exists(QStringLiteral("/proc/%1/stat").arg(child))); // a zombie
    QVERIFY(!listed().contains(child));
    QCOMPARE(::waitpid(child, nullptr, 0), child);
}

void ProcessListTest::aProcessThatMayNotBeLookedAtIsNotListed()
{
    if (::geteuid() == 0) {
        QSKIP("root may look at every process");
    }
    std::array<int, 2> ready{};
    QCOMPARE(::pipe(ready.data()), 0);
    const auto child = ::fork();
    if (child == 0) {
        // Such a process is closed to its own user as another user's is.
        ::prctl(PR_SET_DUMPABLE, 0);
        ::close(ready[1]);
        ::pause();
        ::_exit(0);
    }
    ::close(ready[1]);
    char none = 0;
    QCOMPARE(::read(ready[0], &none, 1), 0); // the other end is closed everywhere now
    ::close(ready[0]);
    const auto processes = listed();
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    QVERIFY(!processes.contains(child));
    QVERIFY(processes.contains(::getpid()));
}

void ProcessListTest::processesThatEndDuringTheWalkDoNoHarm()
{
    for (auto i = 0; i < 50; ++i) {
        std::array<pid_t, 4> children{};
        for (auto &child : children) {
            child = ::fork();
            if (child == 0) {
                ::usleep(static_cast<useconds_t>(i * 10));
                ::_exit(0);
            }
        }
        // Those that end now are missing, but no other is.
        QCOMPARE(listed().value(::getpid()), QCoreApplication::applicationFilePath());
        for (const auto child : children) {
            ::waitpid(child, nullptr, 0);
        }
    }
}

TEST_CLASS(ProcessListTest, QCoreApplication)
#include "ProcessListTest.moc"
