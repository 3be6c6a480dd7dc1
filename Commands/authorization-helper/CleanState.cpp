// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/authorization-helper/CleanState.h"

#include <fcntl.h>
#include <linux/keyctl.h>
#include <linux/mempolicy.h>
#include <sched.h>
#include <sys/personality.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace {

// Nothing is limited but what the kernel and systemd limit for root's services, with their figures.
rlimit limitOf(int resource)
{
    switch (resource) {
    case RLIMIT_CORE:
        return {0, RLIM_INFINITY}; // a tool's memory is nobody's to read
    case RLIMIT_STACK:
        return {8UL * 1024 * 1024, RLIM_INFINITY};
    case RLIMIT_NOFILE:
        return {1024, 512UL * 1024};
    case RLIMIT_MEMLOCK:
        return {8UL * 1024 * 1024, 8UL * 1024 * 1024};
    case RLIMIT_MSGQUEUE:
        return {819200, 819200};
    case RLIMIT_NICE:
    case RLIMIT_RTPRIO:
        return {0, 0};
    default:
        return {RLIM_INFINITY, RLIM_INFINITY};
    }
}

// In a container even root may be unable to raise a limit: that of the first process must do then.
bool setLimit(int resource)
{
    auto limit = limitOf(resource);
    rlimit now{};
    rlimit machine{};
    if (::prlimit(0, static_cast<__rlimit_resource>(resource), &limit, nullptr) == 0) {
        return true;
    }
    const int error = errno;
    if (::prlimit(0, static_cast<__rlimit_resource>(resource), nullptr, &now) != 0 ||
        ::prlimit(1, static_cast<__rlimit_resource>(resource), nullptr, &machine) != 0 ||
        now.rlim_max < machine.rlim_max) {
        errno = error;
        return false;
    }
    now.rlim_cur = std::min(limit.rlim_cur, now.rlim_max);
    return ::prlimit(0, static_cast<__rlimit_resource>(resource), &now, nullptr) == 0;
}

bool writeNumber(const char *path, const char *number)
{
    const int file = ::open(path, O_WRONLY | O_CLOEXEC);
    const bool isWritten = file >= 0 && ::write(file, number, std::strlen(number)) >
                                            0; // NOLINT(*-not-null-terminated*)
    ::close(file);
    return isWritten;
}

void resetSignalsAndTimers()
{
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    for (int number = 1; number < NSIG; ++number) {
        std::signal(number, SIG_DFL);
    }
    const itimerval off{};
    for (const auto timer : {ITIMER_REAL, ITIMER_VIRTUAL, ITIMER_PROF}) {
        ::setitimer(timer, &off, nullptr); // one that runs outlives an exec
    }
}

bool resetScheduling()
{
    const sched_param ordinary{};
    cpu_set_t processors;
    std::memset(&processors, 0xff, sizeof processors);
    bool isReset = ::sched_setscheduler(0, SCHED_OTHER, &ordinary) == 0;
    isReset = ::setpriority(PRIO_PROCESS, 0, 0) == 0 && isReset;
    isReset = ::sched_setaffinity(0, sizeof processors, &processors) == 0 && isReset;
    isReset = ::syscall(SYS_ioprio_set, 1 /* one process */, 0, 0) == 0 && isReset; // NOLINT
    return isReset;
}

// Out of the cgroup of the client, whose limits and whose freezing are its user's to set. The
// folder stays for the next time.
bool leaveCgroup()
{
    constexpr const char *folder = "/sys/fs/cgroup/ostrel-authorization";
    if (::access("/sys/fs/cgroup/cgroup.procs", F_OK) != 0) {
        return true; // not the second version, in which users have such rights
    }
    return (::mkdir(folder, 0755) == 0 || errno == EEXIST) &&
           writeNumber("/sys/fs/cgroup/ostrel-authorization/cgroup.procs", "0");
}

// What some kernels do not have, or do not let containers do, is left out there.
void resetRest()
{
    constexpr unsigned long usualSlack = 50'000; // nanoseconds, that of the kernel's first process
    ::prctl(PR_SET_PDEATHSIG, 0); // the thread that has asked may end; the socket tells of the rest
    ::prctl(PR_SET_TIMERSLACK, usualSlack);
    ::prctl(PR_SET_THP_DISABLE, 0, 0, 0, 0);
    ::prctl(PR_SET_TSC, PR_TSC_ENABLE);
    ::personality(PER_LINUX);
    ::syscall(SYS_set_mempolicy, MPOL_DEFAULT, nullptr, 0);      // NOLINT
    ::syscall(SYS_keyctl, KEYCTL_JOIN_SESSION_KEYRING, nullptr); // NOLINT
    ::setsid(); // the keys of a terminal are not for us
}

} // namespace

std::string cleanState(bool *isFatal)
{
    ::clearenv();
    ::umask(022);
    resetSignalsAndTimers();
    resetRest();
    *isFatal = true;
    if (::chdir("/") != 0) {
        return std::string("the folder: ") + std::strerror(errno);
    }
    for (int resource = 0; resource < RLIM_NLIMITS; ++resource) {
        if (!setLimit(resource)) {
            return "resource limit " + std::to_string(resource) +
                   " (setrlimit): " + std::strerror(errno);
        }
    }
    *isFatal = false;
    if (!resetScheduling()) {
        return std::string("priority and scheduling: ") + std::strerror(errno);
    }
    if (!writeNumber("/proc/self/oom_score_adj", "0")) {
        return std::string("the OOM score: ") + std::strerror(errno);
    }
    if (!leaveCgroup()) {
        return std::string("the cgroup: ") + std::strerror(errno);
    }
    return {};
}
