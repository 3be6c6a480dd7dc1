// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

// System calls that fail when a test wants them to. In a test that links the library Faults, the
// test's own calls and those of its libraries go through it. A child program gets the library by
// LD_PRELOAD and its fault by the variable FAULT. Calls are not changed while no fault is armed.
namespace test {

// Kinds of calls; each stands for all functions that do the same.
enum Calls : unsigned {
    Open = 1U << 0U,       // open, openat, creat
    Read = 1U << 1U,       // read, pread, getdents64
    Write = 1U << 2U,      // write, pwrite, ftruncate
    Sync = 1U << 3U,       // fsync, fdatasync
    Rename = 1U << 4U,     // rename, renameat, renameat2
    Link = 1U << 5U,       // linkat, symlinkat
    Make = 1U << 6U,       // mkdir, mkdirat, mknodat
    Remove = 1U << 7U,     // unlink, unlinkat, rmdir
    Copy = 1U << 8U,       // copy_file_range
    Spawn = 1U << 9U,      // fork, posix_spawn, posix_spawnp
    Exec = 1U << 10U,      // execve, execv, execvp
    Pipe = 1U << 11U,      // pipe, pipe2
    Socket = 1U << 12U,    // socketpair
    Message = 1U << 13U,   // sendmsg, recvmsg
    Duplicate = 1U << 14U, // dup, and fcntl where it does the same
    Event = 1U << 15U,     // eventfd, epoll_create1, epoll_ctl
    Process = 1U << 16U,   // pidfd_open, by way of syscall
    Wait = 1U << 17U,      // poll, epoll_wait, waitid: they fail with EINTR only
    Thread = 1U << 18U,    // pthread_create
    AllCalls = (1U << 19U) - 1U,
};

enum class Outcome {
    Fails,      // with the error, and nothing is done
    FallsShort, // reading and writing: half of what is asked for
    Kills,      // the process, before the call
    Interferes, // done, and right behind it somebody does something
    Stops,      // the process, before the call, until it is told to continue
};

struct Fault {
    unsigned calls = AllCalls;
    int nth = 1; // the first call is 1
    Outcome outcome = Outcome::Fails;
    int error = 0;          // as errno
    bool forGood = false;   // the calls after that, too; of interruptions 5000, since signals end
    bool anyThread = false; // else only calls of the thread that arms the fault
    // What an attacker does when the call Interferes, or right after one that Fails.
    std::function<void()> interference = {};
};

// Armed while it exists; one at a time.
class Faults {
public:
    explicit Faults(const Fault &fault);
    ~Faults();
    Faults(const Faults &) = delete;
    Faults &operator=(const Faults &) = delete;

    // Whether the fault has struck.
    static bool haveStruck();
};

} // namespace test

// The same by name, for dlsym. The variable FAULT of a child program is "CALLS NTH OUTCOME ERROR
// FOR_GOOD" in numbers, any thread being meant.
extern "C" {
void armFault(unsigned calls, int nth, int outcome, int error, int forGood, int anyThread);
void disarmFault();
int faultHasStruck();
}
