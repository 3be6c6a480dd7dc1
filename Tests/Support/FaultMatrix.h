// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Tests/Support/Children.h"
#include "Tests/Support/Faults/Faults.h"

#include <QTest>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

// Runs operations under every kind of fault.
namespace test {

struct FaultKind {
    const char *name;
    Outcome outcome;
    int error;
};

inline constexpr std::array faultKinds{
    FaultKind{"ENOSPC", Outcome::Fails, ENOSPC}, FaultKind{"EIO", Outcome::Fails, EIO},
    FaultKind{"EACCES", Outcome::Fails, EACCES}, FaultKind{"EMFILE", Outcome::Fails, EMFILE},
    FaultKind{"EINTR", Outcome::Fails, EINTR},   FaultKind{"short count", Outcome::FallsShort, 0}};

// Whether the fault strikes the calls of all threads, or those of the test's own.
enum class Threads { Own, All };

// Makes the Nth of the calls fail, for N from 1 until the operation runs without meeting the fault:
// with each kind of fault, once and for good. prepare() runs before each time. operation() returns
// its result; check(result) returns what is wrong afterwards, or null. A short count is not a
// failure. No descriptor may stay open; other threads get some time to close theirs.
template <typename Kinds, typename Prepare, typename Operation, typename Check>
void underFaults(const Kinds &kinds, Threads threads, unsigned calls, const Prepare &prepare,
                 const Operation &operation, const Check &check)
{
    int struck = 0;
    for (const FaultKind &kind : kinds) {
        for (const auto forGood : {false, true}) {
            for (int nth = 1;; ++nth) {
                prepare();
                const auto where =
                    QStringLiteral("%1 %2 at call %3")
                        .arg(QLatin1String(kind.name),
                             forGood ? QStringLiteral("for good") : QStringLiteral("once"))
                        .arg(nth);
                const auto before = openDescriptors();
                bool result = false;
                bool hasStruck = false;
                {
                    const Faults faults(
                        {calls, nth, kind.outcome, kind.error, forGood, threads == Threads::All});
                    result = operation();
                    hasStruck = Faults::haveStruck();
                }
                const auto isClosed = becomesTrue([&] { return openDescriptors() <= before; });
                const QString complaint = check(result);
                QVERIFY2(complaint.isNull(), qUtf8Printable(where + u':' + u' ' + complaint));
                QVERIFY2(isClosed, qUtf8Printable(where + QStringLiteral(": a leak")));
                QVERIFY2(result || kind.outcome == Outcome::Fails, qUtf8Printable(where));
                if (!hasStruck) {
                    QVERIFY(result);
                    break;
                }
                ++struck;
                QVERIFY(nth < 2000);
            }
        }
    }
    QVERIFY(struck > 0);
}

template <typename Prepare, typename Operation, typename Check>
void underEveryFault(unsigned calls, const Prepare &prepare, const Operation &operation,
                     const Check &check)
{
    underFaults(faultKinds, Threads::Own, calls, prepare, operation, check);
}

// The same with a process that is killed at its Nth call. check() gives what is wrong then.
template <typename Prepare, typename Operation, typename Check>
void killedAtEveryCall(const Prepare &prepare, const Operation &operation, const Check &check)
{
    for (int nth = 1;; ++nth) {
        prepare();
        const auto process = ::fork();
        if (process == 0) {
            const Faults faults({AllCalls, nth, Outcome::Kills, 0, false, false});
            operation();
            ::_exit(0);
        }
        QVERIFY(process > 0);
        int status = 0;
        QCOMPARE(::waitpid(process, &status, 0), process);
        const auto wasKilled = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
        const QString complaint = check(!wasKilled);
        QVERIFY2(complaint.isNull(),
                 qUtf8Printable(QStringLiteral("killed at call %1: %2").arg(nth).arg(complaint)));
        if (!wasKilled) {
            QVERIFY(WIFEXITED(status));
            QVERIFY(nth > 1);
            return;
        }
        QVERIFY(nth < 2000);
    }
}

} // namespace test
