// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/Faults/Faults.h"

#include "Tests/Support/Faults/Strike.h"

#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace test {
namespace {

// Written while nothing is armed, read by the calls.
struct Plan {
    std::atomic<unsigned> calls = 0; // none while nothing is armed
    std::atomic<int> nth = 0;
    std::atomic<int> outcome = 0;
    std::atomic<int> error = 0;
    std::atomic<bool> forGood = false;
    std::atomic<pid_t> thread = 0; // 0 for any
    std::atomic<int> count = 0;
    std::atomic<bool> struck = false;
};

Plan &plan()
{
    static Plan instance;
    return instance;
}

// Changed while nothing is armed.
std::function<void()> &interference()
{
    static std::function<void()> instance;
    return instance;
}

// What waits to be interrupted again and again must still get through.
constexpr int maxInterruptions = 5000;

// Whether the system ever does that to such a call.
bool canMeet(Calls calls, Outcome outcome, int error)
{
    if (outcome == Outcome::FallsShort) {
        return (calls & (Read | Write | Copy)) != 0U;
    }
    return outcome == Outcome::Kills || outcome == Outcome::Stops ||
           outcome == Outcome::Interferes || error == EINTR || (calls & Wait) == 0U;
}

// Kept here rather than asked for at every call; a forked child has its own.
pid_t currentThread()
{
    return ::gettid();
}

} // namespace

Strike strike(Calls calls)
{
    auto &armed = plan();
    if ((armed.calls & calls) == 0U || (armed.thread != 0 && armed.thread != currentThread())) {
        return {};
    }
    const auto outcome = static_cast<Outcome>(armed.outcome.load());
    const auto error = armed.error.load();
    if (!canMeet(calls, outcome, error)) {
        return {};
    }
    const auto number = ++armed.count;
    const auto isInterruption = outcome == Outcome::Fails && error == EINTR;
    if (number < armed.nth || (number > armed.nth && !armed.forGood) ||
        (isInterruption && number >= armed.nth + maxInterruptions)) {
        return {};
    }
    armed.struck = true;
    if (outcome == Outcome::Kills) {
        ::kill(::getpid(), SIGKILL);
    } else if (outcome == Outcome::Stops) {
        ::raise(SIGSTOP);
    }
    return {outcome == Outcome::Fails ? error : 0, outcome == Outcome::FallsShort,
            static_cast<bool>(interference())};
}

void interfere()
{
    const auto calls = plan().calls.exchange(0); // not at its own calls
    const auto error = errno;
    interference()();
    errno = error;
    plan().calls = calls;
}

Faults::Faults(const Fault &fault)
{
    interference() = fault.interference;
    armFault(fault.calls, fault.nth, static_cast<int>(fault.outcome), fault.error,
             static_cast<int>(fault.forGood), static_cast<int>(fault.anyThread));
}

Faults::~Faults()
{
    disarmFault();
    interference() = nullptr;
}

bool Faults::haveStruck()
{
    return faultHasStruck() != 0;
}

namespace {

// For a program that was started with the library.
[[gnu::constructor]] void armFromEnvironment()
{
    unsigned calls = 0;
    int nth = 0;
    int outcome = 0;
    int error = 0;
    int forGood = 0;
    const auto *text = std::getenv("FAULT");
    if (text != nullptr &&
        std::sscanf(text, "%u %d %d %d %d", &calls, &nth, &outcome, &error, &forGood) == 5) {
        armFault(calls, nth, outcome, error, forGood, 1);
    }
}

} // namespace
} // namespace test

void armFault(unsigned calls, int nth, int outcome, int error, int forGood, int anyThread)
{
    auto &plan = test::plan();
    plan.calls = 0;
    plan.nth = nth;
    plan.outcome = outcome;
    plan.error = error;
    plan.forGood = forGood != 0;
    plan.thread = anyThread != 0 ? 0 : ::gettid();
    plan.count = 0;
    plan.struck = false;
    plan.calls = calls;
}

void disarmFault()
{
    test::plan().calls = 0;
}

int faultHasStruck()
{
    return test::plan().struck ? 1 : 0;
}
