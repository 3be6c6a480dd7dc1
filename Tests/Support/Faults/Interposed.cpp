// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// The functions of the C library that can fail, in front of the real ones. Calls that the C library
// makes to itself do not come here.
#include "Tests/Support/Faults/Strike.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>

namespace {

using test::strike;

template <typename Function, typename... Arguments>
auto unless(const test::Strike &struck, Function *function, Arguments... arguments)
    -> decltype(function(arguments...))
{
    using Result = decltype(function(arguments...));
    const auto result = struck.error != 0 ? Result(-1) : function(arguments...);
    if (struck.error != 0) {
        errno = struck.error;
    }
    if (struck.interferes) {
        test::interfere();
    }
    return result;
}

mode_t modeOf(int flags, va_list arguments)
{
    const auto wanted = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return wanted ? va_arg(arguments, mode_t) : 0;
}

} // namespace

// The real function of that name. Kept without the compiler's own guard, which may wait by a call
// that comes here, too.
#define REAL(name)                                                                                 \
    ([] {                                                                                          \
        static std::atomic<void *> function = nullptr;                                             \
        if (function == nullptr) {                                                                 \
            function = ::dlsym(RTLD_NEXT, #name);                                                  \
        }                                                                                          \
        return reinterpret_cast<decltype(&::name)>(function.load());                               \
    }())
#define INTERPOSED extern "C" __attribute__((visibility("default")))

// NOLINTBEGIN(*-vararg,cert-dcl50-cpp,readability-inconsistent-declaration-parameter-name)

#define OPEN_FUNCTION(name)                                                                        \
    INTERPOSED int name(const char *path, int flags, ...)                                          \
    {                                                                                              \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const auto mode = modeOf(flags, arguments);                                                \
        va_end(arguments);                                                                         \
        return unless(strike(test::Open), REAL(name), path, flags, mode);                          \
    }
OPEN_FUNCTION(open)
OPEN_FUNCTION(open64)

#define OPENAT_FUNCTION(name)                                                                      \
    INTERPOSED int name(int folder, const char *path, int flags, ...)                              \
    {                                                                                              \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const auto mode = modeOf(flags, arguments);                                                \
        va_end(arguments);                                                                         \
        return unless(strike(test::Open), REAL(name), folder, path, flags, mode);                  \
    }
OPENAT_FUNCTION(openat)
OPENAT_FUNCTION(openat64)

INTERPOSED ssize_t read(int file, void *data, size_t size)
{
    const auto struck = strike(test::Read);
    return unless(struck, REAL(read), file, data, struck.cut(size));
}

INTERPOSED ssize_t pread(int file, void *data, size_t size, off_t at)
{
    const auto struck = strike(test::Read);
    return unless(struck, REAL(pread), file, data, struck.cut(size), at);
}

// Never short: half an entry is nothing that the system would give.
INTERPOSED ssize_t getdents64(int folder, void *data, size_t size) noexcept
{
    return unless(strike(test::Read), REAL(getdents64), folder, data, size);
}

INTERPOSED ssize_t write(int file, const void *data, size_t size)
{
    const auto struck = strike(test::Write);
    return unless(struck, REAL(write), file, data, struck.cut(size));
}

INTERPOSED ssize_t pwrite(int file, const void *data, size_t size, off_t at)
{
    const auto struck = strike(test::Write);
    return unless(struck, REAL(pwrite), file, data, struck.cut(size), at);
}

INTERPOSED int ftruncate(int file, off_t size) noexcept
{
    return unless(strike(test::Write), REAL(ftruncate), file, size);
}

INTERPOSED ssize_t copy_file_range(int from, off64_t *in, int to, off64_t *out, size_t size,
                                   unsigned flags)
{
    const auto struck = strike(test::Copy);
    return unless(struck, REAL(copy_file_range), from, in, to, out, struck.cut(size), flags);
}

INTERPOSED int fsync(int file)
{
    return unless(strike(test::Sync), REAL(fsync), file);
}

INTERPOSED int fdatasync(int file)
{
    return unless(strike(test::Sync), REAL(fdatasync), file);
}

INTERPOSED int rename(const char *from, const char *to) noexcept
{
    return unless(strike(test::Rename), REAL(rename), from, to);
}

INTERPOSED int renameat(int fromFolder, const char *from, int toFolder, const char *to) noexcept
{
    return unless(strike(test::Rename), REAL(renameat), fromFolder, from, toFolder, to);
}

INTERPOSED int renameat2(int fromFolder, const char *from, int toFolder, const char *to,
                         unsigned flags) noexcept
{
    return unless(strike(test::Rename), REAL(renameat2), fromFolder, from, toFolder, to, flags);
}

INTERPOSED int linkat(int fromFolder, const char *from, int toFolder, const char *to,
                      int flags) noexcept
{
    return unless(strike(test::Link), REAL(linkat), fromFolder, from, toFolder, to, flags);
}

INTERPOSED int symlinkat(const char *target, int folder, const char *name) noexcept
{
    return unless(strike(test::Link), REAL(symlinkat), target, folder, name);
}

INTERPOSED int mkdir(const char *path, mode_t mode) noexcept
{
    return unless(strike(test::Make), REAL(mkdir), path, mode);
}

INTERPOSED int mkdirat(int folder, const char *name, mode_t mode) noexcept
{
    return unless(strike(test::Make), REAL(mkdirat), folder, name, mode);
}

INTERPOSED int mknodat(int folder, const char *name, mode_t mode, dev_t device) noexcept
{
    return unless(strike(test::Make), REAL(mknodat), folder, name, mode, device);
}

INTERPOSED int unlink(const char *path) noexcept
{
    return unless(strike(test::Remove), REAL(unlink), path);
}

INTERPOSED int unlinkat(int folder, const char *name, int flags) noexcept
{
    return unless(strike(test::Remove), REAL(unlinkat), folder, name, flags);
}

INTERPOSED int rmdir(const char *path) noexcept
{
    return unless(strike(test::Remove), REAL(rmdir), path);
}

INTERPOSED pid_t fork() noexcept
{
    return unless(strike(test::Spawn), REAL(fork));
}

INTERPOSED int posix_spawn(pid_t *process, const char *path,
                           const posix_spawn_file_actions_t *actions,
                           const posix_spawnattr_t *attributes, char *const arguments[],
                           char *const environment[])
{
    const auto struck = strike(test::Spawn);
    return struck.error != 0
               ? struck.error
               : REAL(posix_spawn)(process, path, actions, attributes, arguments, environment);
}

INTERPOSED int posix_spawnp(pid_t *process, const char *path,
                            const posix_spawn_file_actions_t *actions,
                            const posix_spawnattr_t *attributes, char *const arguments[],
                            char *const environment[])
{
    const auto struck = strike(test::Spawn);
    return struck.error != 0
               ? struck.error
               : REAL(posix_spawnp)(process, path, actions, attributes, arguments, environment);
}

INTERPOSED int execve(const char *path, char *const arguments[], char *const environment[]) noexcept
{
    return unless(strike(test::Exec), REAL(execve), path, arguments, environment);
}

INTERPOSED int execv(const char *path, char *const arguments[]) noexcept
{
    return unless(strike(test::Exec), REAL(execv), path, arguments);
}

INTERPOSED int execvp(const char *path, char *const arguments[]) noexcept
{
    return unless(strike(test::Exec), REAL(execvp), path, arguments);
}

INTERPOSED int pipe(int ends[2]) noexcept
{
    return unless(strike(test::Pipe), REAL(pipe), ends);
}

INTERPOSED int pipe2(int ends[2], int flags) noexcept
{
    return unless(strike(test::Pipe), REAL(pipe2), ends, flags);
}

INTERPOSED int socketpair(int domain, int kind, int protocol, int ends[2]) noexcept
{
    return unless(strike(test::Socket), REAL(socketpair), domain, kind, protocol, ends);
}

INTERPOSED ssize_t sendmsg(int socket, const msghdr *message, int flags)
{
    return unless(strike(test::Message), REAL(sendmsg), socket, message, flags);
}

INTERPOSED ssize_t recvmsg(int socket, msghdr *message, int flags)
{
    return unless(strike(test::Message), REAL(recvmsg), socket, message, flags);
}

INTERPOSED int dup(int file) noexcept
{
    return unless(strike(test::Duplicate), REAL(dup), file);
}

#define FCNTL_FUNCTION(name)                                                                       \
    INTERPOSED int name(int file, int command, ...)                                                \
    {                                                                                              \
        va_list arguments;                                                                         \
        va_start(arguments, command);                                                              \
        auto *const argument = va_arg(arguments, void *);                                          \
        va_end(arguments);                                                                         \
        const auto duplicates = command == F_DUPFD || command == F_DUPFD_CLOEXEC;                  \
        return unless(duplicates ? strike(test::Duplicate) : test::Strike(), REAL(name), file,     \
                      command, argument);                                                          \
    }
FCNTL_FUNCTION(fcntl)
FCNTL_FUNCTION(fcntl64)

INTERPOSED int eventfd(unsigned count, int flags) noexcept
{
    return unless(strike(test::Event), REAL(eventfd), count, flags);
}

INTERPOSED int epoll_create1(int flags) noexcept
{
    return unless(strike(test::Event), REAL(epoll_create1), flags);
}

INTERPOSED int epoll_ctl(int events, int operation, int file, epoll_event *event) noexcept
{
    return unless(strike(test::Event), REAL(epoll_ctl), events, operation, file, event);
}

INTERPOSED int epoll_wait(int events, epoll_event *ready, int most, int milliseconds)
{
    return unless(strike(test::Wait), REAL(epoll_wait), events, ready, most, milliseconds);
}

INTERPOSED int poll(pollfd *files, nfds_t count, int milliseconds)
{
    return unless(strike(test::Wait), REAL(poll), files, count, milliseconds);
}

INTERPOSED int waitid(idtype_t kind, id_t which, siginfo_t *end, int options)
{
    return unless(strike(test::Wait), REAL(waitid), kind, which, end, options);
}

INTERPOSED long syscall(long number, ...) noexcept
{
    va_list list;
    va_start(list, number);
    long arguments[6];
    for (auto &argument : arguments) {
        argument = va_arg(list, long);
    }
    va_end(list);
    return unless(number == SYS_pidfd_open ? strike(test::Process) : test::Strike(), REAL(syscall),
                  number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4],
                  arguments[5]);
}

INTERPOSED int pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                              void *(*body)(void *), void *argument) noexcept
{
    const auto struck = strike(test::Thread);
    return struck.error != 0 ? struck.error
                             : REAL(pthread_create)(thread, attributes, body, argument);
}

// NOLINTEND(*-vararg,cert-dcl50-cpp,readability-inconsistent-declaration-parameter-name)
