// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/Jobs/LaunchSession.h"
#include "Commands/Jobs/Messages.h"
#include "Commands/job-supervisor/Supervisor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

constexpr auto queueLength = 64;

int failed(const char *what)
{
    std::fprintf(stderr, "job-supervisor: %s: %s\n", what, // NOLINT(*-vararg)
                 std::strerror(errno));                    // NOLINT(concurrency-mt-unsafe)
    return 1;
}

platform::Descriptor listeningSocket()
{
    const auto address = messages::socketAddress();
    const auto *generic =
        reinterpret_cast<const sockaddr *>(&address); // NOLINT(*-reinterpret-cast)
    platform::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    ::unlink(platform::supervisorSocketName); // of one that was killed
    ::umask(S_IRWXG | S_IRWXO);
    if (!socket.isOpen() || ::bind(socket.fd(), generic, sizeof address) != 0 ||
        ::listen(socket.fd(), queueLength) != 0) {
        return {};
    }
    return socket;
}

platform::Descriptor folderWatch()
{
    platform::Descriptor watch(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    constexpr auto changes =
        IN_DELETE | IN_MOVED_FROM | IN_DELETE_SELF | IN_MOVE_SELF | IN_CREATE | IN_MOVED_TO;
    ::inotify_add_watch(watch.fd(), ".", changes);
    return watch;
}

platform::Descriptor signalDescriptor()
{
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const auto signal : {SIGCHLD, SIGTERM, SIGINT, SIGHUP}) {
        ::sigaddset(&signals, signal);
    }
    ::sigprocmask(SIG_SETMASK, &signals, nullptr);
    return platform::Descriptor(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

// Leaves the caller's session and its streams behind. False in the processes that are to end.
bool becomeDaemon()
{
    if (::fork() != 0) {
        return false;
    }
    ::setsid();
    if (::fork() != 0) {
        return false;
    }
    const auto nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC); // NOLINT(*-vararg)
    for (const auto stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::dup2(nothing, stream);
    }
    ::close(nothing);
    ::umask(S_IWGRP | S_IWOTH);
    return ::chdir("/") == 0;
}

} // namespace

// Started by launchctl on the first load. Ends at once, with success, when it can be reached; what
// stays behind is its grandchild, or another's that was there before.
int main()
{
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    const auto folder = platform::jobControlFolder();
    if (folder.isEmpty() || ::chdir(folder.constData()) != 0) {
        return failed("the folder of the session's jobs");
    }
    const platform::Descriptor lock(
        ::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)); // NOLINT(*-vararg)
    if (::flock(lock.fd(), LOCK_EX | LOCK_NB) != 0) {
        return errno == EWOULDBLOCK ? 0 : failed("lock");
    }
    auto socket = listeningSocket();
    if (!socket.isOpen()) {
        return failed(platform::supervisorSocketName);
    }
    auto watch = folderWatch();
    if (!becomeDaemon()) {
        return 0;
    }
    // Whoever a job's program leaves behind is waited for here, too.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1); // NOLINT(*-vararg)
    Supervisor({std::move(socket), signalDescriptor(), std::move(watch)},
               folder + '/' + platform::supervisorSocketName)
        .run();
    return 0;
}
