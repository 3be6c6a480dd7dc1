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
    std::atomic<int> fate = 0;
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
std::function<void()> &meddling()
{
    static std::function<void()> instance;
    return instance;
}

// What waits to be interrupted again and again must still get through.
constexpr int mostInterruptions = 5000;

// Whether the system ever does that to such a call.
bool canMeet(Calls calls, Fate fate, int error)
{
    if (fate == Fate::FallsShort) {
        return (calls & (Read | Write | Copy)) != 0U;
    }
    return fate == Fate::Kills || fate == Fate::Stops || fate == Fate::Meddled || error == EINTR ||
           (calls & Wait) == 0U;
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
    const auto fate = static_cast<Fate>(armed.fate.load());
    const auto error = armed.error.load();
    if (!canMeet(calls, fate, error)) {
        return {};
    }
    const auto number = ++armed.count;
    const auto isInterruption = fate == Fate::Fails && error == EINTR;
    if (number < armed.nth || (number > armed.nth && !armed.forGood) ||
        (isInterruption && number >= armed.nth + mostInterruptions)) {
        return {};
    }
    armed.struck = true;
    if (fate == Fate::Kills) {
        ::kill(::getpid(), SIGKILL);
    } else if (fate == Fate::Stops) {
        ::raise(SIGSTOP);
    }
    return {fate == Fate::Fails ? error : 0, fate == Fate::FallsShort,
            static_cast<bool>(meddling())};
}

void meddle()
{
    const auto calls = plan().calls.exchange(0); // not at its own calls
    const auto error = errno;
    meddling()();
    errno = error;
    plan().calls = calls;
}

Faults::Faults(const Fault &fault)
{
    meddling() = fault.meddling;
    armFault(fault.calls, fault.nth, static_cast<int>(fault.fate), fault.error,
             static_cast<int>(fault.forGood), static_cast<int>(fault.anyThread));
}

Faults::~Faults()
{
    disarmFault();
    meddling() = nullptr;
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
    int fate = 0;
    int error = 0;
    int forGood = 0;
    const auto *text = std::getenv("FAULT");
    if (text != nullptr &&
        std::sscanf(text, "%u %d %d %d %d", &calls, &nth, &fate, &error, &forGood) == 5) {
        armFault(calls, nth, fate, error, forGood, 1);
    }
}

} // namespace
} // namespace test

void armFault(unsigned calls, int nth, int fate, int error, int forGood, int anyThread)
{
    auto &plan = test::plan();
    plan.calls = 0;
    plan.nth = nth;
    plan.fate = fate;
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
