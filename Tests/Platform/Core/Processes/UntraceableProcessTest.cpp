// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/UntraceableProcess.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Files/UnnamedFile.h"
#include "Tests/Support/Children.h"
#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

using platform::UntraceableProcess;

// What other programs meet is tested with a real authorisation, too: AuthorizationAttackers.
class UntraceableProcessTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void noOtherProcessReadsItsMemoryWhileOneLives();
    void theLastOfSeveralRestoresWhatWas();
    void manyThreadsMayHoldOne();
    void aProcessThatWasUntraceableBeforeStaysSo();
    void whoeverTracesAnyThreadIsFound();
    void filesAreStillMadeAndReplaced();
    void childrenAreLikeAnyOthers();
};

namespace {

// Another process of this user reads a byte of ours.
bool isReadByAnother()
{
    static char secret = 'x';
    const auto target = ::getpid();
    const auto reader = ::fork();
    if (reader == 0) {
        // It has the traits of this one, which are not to matter.
        ::prctl(PR_SET_DUMPABLE, 1);
        char byte = 0;
        iovec ours{&byte, 1};
        iovec theirs{&secret, 1};
        ::_exit(::process_vm_readv(target, &ours, 1, &theirs, 1, 0) == 1 ? 0 : 1);
    }
    int status = -1;
    ::waitpid(reader, &status, 0);
    return status == 0;
}

// Traces a thread of this process from another one until the end of this object.
class Tracer {
public:
    explicit Tracer(pid_t thread)
    {
        std::array<int, 2> ready{};
        std::array<int, 2> end{};
        if (::pipe(ready.data()) != 0 || ::pipe(end.data()) != 0) {
            return;
        }
        m_process = ::fork();
        if (m_process == 0) {
            ::close(end[1]);
            const char answer = ::ptrace(PTRACE_SEIZE, thread, nullptr, nullptr) == 0 ? '+' : '-';
            char byte = 0;
            ::_exit(::write(ready[1], &answer, 1) == 1 && ::read(end[0], &byte, 1) == 0 ? 0 : 1);
        }
        ::close(ready[1]);
        ::close(end[0]);
        m_end = platform::Descriptor(end[1]);
        char answer = 0;
        m_isTracing = ::read(ready[0], &answer, 1) == 1 && answer == '+';
        ::close(ready[0]);
    }
    ~Tracer()
    {
        m_end.close();
        ::waitpid(m_process, nullptr, 0);
    }
    Tracer(const Tracer &) = delete;
    Tracer &operator=(const Tracer &) = delete;

    pid_t process() const { return m_process; }
    bool isTracing() const { return m_isTracing; }

private:
    pid_t m_process = -1;
    bool m_isTracing = false;
    platform::Descriptor m_end;
};

} // namespace

void UntraceableProcessTest::noOtherProcessReadsItsMemoryWhileOneLives()
{
    QVERIFY(isReadByAnother());
    for (int i = 0; i < 2; ++i) {
        {
            const UntraceableProcess untraceable;
            QVERIFY(platform::isUntraceable());
            QVERIFY(!isReadByAnother());
        }
        QVERIFY(!platform::isUntraceable());
        QVERIFY(isReadByAnother());
    }
}

void UntraceableProcessTest::theLastOfSeveralRestoresWhatWas()
{
    auto first = std::make_unique<UntraceableProcess>();
    auto second = std::make_unique<UntraceableProcess>();
    first.reset();
    QVERIFY(!isReadByAnother());
    first = std::make_unique<UntraceableProcess>();
    second.reset();
    QVERIFY(!isReadByAnother());
    first.reset();
    QVERIFY(isReadByAnother());
}

void UntraceableProcessTest::manyThreadsMayHoldOne()
{
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&wrong] {
            for (int round = 0; round < 1000; ++round) {
                const UntraceableProcess untraceable;
                wrong += platform::isUntraceable() ? 0 : 1;
            }
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    QCOMPARE(wrong.load(), 0);
    QVERIFY(!platform::isUntraceable());
}

void UntraceableProcessTest::aProcessThatWasUntraceableBeforeStaysSo()
{
    ::prctl(PR_SET_DUMPABLE, 0);
    {
        const UntraceableProcess untraceable;
    }
    QVERIFY(platform::isUntraceable());
    ::prctl(PR_SET_DUMPABLE, 1);
}

void UntraceableProcessTest::whoeverTracesAnyThreadIsFound()
{
    QCOMPARE(platform::tracerOfThisProcess(), 0);
    {
        const Tracer tracer(::getpid());
        QVERIFY(tracer.isTracing());
        QCOMPARE(platform::tracerOfThisProcess(), tracer.process());
    }
    std::atomic<pid_t> number = 0;
    std::atomic<bool> isEnd = false;
    std::thread thread([&] {
        number = ::gettid();
        isEnd.wait(false);
    });
    QVERIFY(test::becomesTrue([&] { return number.load() != 0; }));
    {
        const Tracer tracer(number);
        QVERIFY(tracer.isTracing());
        QCOMPARE(platform::tracerOfThisProcess(), tracer.process());
        // It goes on, which is why it has to be looked for.
        const UntraceableProcess untraceable;
        QCOMPARE(platform::tracerOfThisProcess(), tracer.process());
        QVERIFY(!Tracer(::getpid()).isTracing());
    }
    isEnd = true;
    isEnd.notify_all();
    thread.join();
    QCOMPARE(platform::tracerOfThisProcess(), 0);
}

// Some of that goes through links of the process in /proc, which are root's then.
void UntraceableProcessTest::filesAreStillMadeAndReplaced()
{
    const UntraceableProcess untraceable;
    const QTemporaryDir folder;
    const platform::Descriptor descriptor(
        ::open(folder.path().toUtf8().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (const char *name : {"new", "replaced", "replaced"}) {
        platform::UnnamedFile file;
        QCOMPARE(file.create(descriptor.fd(), 0600), 0);
        QCOMPARE(file.publishOrReplace(name), 0);
        QVERIFY(QFileInfo::exists(folder.filePath(QString::fromUtf8(name))));
    }
    QSaveFile saved(folder.filePath(QStringLiteral("saved")));
    QVERIFY(saved.open(QIODevice::WriteOnly) && saved.commit());
    QVERIFY(QCoreApplication::applicationFilePath().endsWith(QStringLiteral("Tests")));
    QVERIFY(test::openDescriptors() > 0);
}

void UntraceableProcessTest::childrenAreLikeAnyOthers()
{
    const UntraceableProcess untraceable;
    // The folder is the starter's for a process that is like others, else root's.
    const auto child = test::shell(QStringLiteral("test -O /proc/self/fd && test -r /proc/$$/mem"));
    child->launch();
    child->waitUntilExit();
    QCOMPARE(child->terminationStatus(), 0);
}

TEST_CLASS(UntraceableProcessTest, QCoreApplication)
#include "UntraceableProcessTest.moc"
