// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
//
// authorization-helper: runs tools as root for the process that polkit has let start it.
//
// pkexec starts it once the administrator's password is given, with one end of a socket as standard
// input. It sends back one end of another socket, the one for requests, and serves whoever holds
// that until nobody does. There is no name by which anybody else could reach it. A request comes
// with a pipe for the answer, so that any number of threads and processes may share the socket; see
// Platform/ToolRequest.h for its bytes. Nothing that the client has (environment, folder, umask,
// signals, descriptors) reaches the tools.

#include "Platform/CleanProcess.h"
#include "Platform/Descriptor.h"
#include "Platform/FileName.h"
#include "Platform/SystemCommand.h"
#include "Platform/ToolRequest.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>

namespace {

using platform::Descriptor;

// Whom polkit has asked about: pkexec's word, which only root can have put there.
std::optional<uid_t> userOfPkexec()
{
    const char *text = std::getenv("PKEXEC_UID");
    if (::getuid() != 0 || ::geteuid() != 0 || text == nullptr) {
        return {};
    }
    const char *end = text + std::strlen(text);
    uid_t user = 0;
    const auto [rest, error] = std::from_chars(text, end, user);
    return error == std::errc() && rest == end ? std::optional(user) : std::nullopt;
}

// The socket by which we were started belongs to that user.
bool wasStartedBy(uid_t user)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(STDIN_FILENO, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == user;
}

// Makes this process the same whoever has started it.
void forgetStarter()
{
    ::prctl(PR_SET_PDEATHSIG, 0); // the thread that has asked may end; the socket tells of the rest
    ::setsid();                   // the keys of a terminal are not for us
    ::clearenv();
    ::umask(022);
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    for (int number = 1; number < NSIG; ++number) {
        std::signal(number, SIG_DFL);
    }
    std::signal(SIGCHLD, SIG_IGN); // the system reaps what we start
    std::signal(SIGPIPE, SIG_IGN); // nobody may be waiting for an answer any more
    if (::chdir("/") != 0) {
        std::exit(EXIT_FAILURE);
    }
}

// The socket that takes the requests, after its other end has been sent to the starter.
Descriptor openForRequests()
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return {};
    }
    Descriptor requests(ends[0]);
    const Descriptor holders(ends[1]);
    const int yes = 1;
    if (::setsockopt(requests.number(), SOL_SOCKET, SO_PASSCRED, &yes, sizeof yes) != 0 ||
        !platform::sendPacket(STDIN_FILENO, platform::toolGreeting, {holders.number()})) {
        return {};
    }
    return requests;
}

void leaveStandardDescriptors()
{
    const Descriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::dup2(null.number(), number);
    }
}

bool isPipe(const Descriptor &descriptor)
{
    struct stat status {};
    return ::fstat(descriptor.number(), &status) == 0 && S_ISFIFO(status.st_mode);
}

// A line for the administrator, as sudo and pkexec write one.
void note(uid_t user, const QByteArray &path, const QList<QByteArray> &arguments)
{
    auto line = path;
    for (const auto &argument : arguments) {
        line += ' ' + argument.toPercentEncoding(" /:;,=+@!()[]{}*?&$#'\"");
    }
    ::syslog(LOG_AUTHPRIV | LOG_NOTICE, "for user %u: %s", user, line.left(4000).constData());
}

// 0, or the system's error number.
int startTool(uid_t user, QList<QByteArray> words, int output)
{
    const auto asked = words.takeFirst();
    if (!asked.startsWith('/')) {
        return ENOENT;
    }
    // What is there is run or refused; only in place of a file that is missing another is looked
    // for.
    const bool isThere = ::access(asked.constData(), F_OK) == 0;
    const auto name = platform::fileNameFromBytes(asked);
    const auto tool = isThere ? name : platform::systemCommand(name);
    const auto path = platform::fileNameBytes(tool);
    if (::access(path.constData(), X_OK) != 0) {
        return errno;
    }
    if (!platform::isChangedOnlyByRoot(tool)) {
        return EPERM;
    }
    note(user, path, words);
    int error = 0;
    platform::startCleanProcess(path, words, {-1, output, -1}, &error);
    return error;
}

int serve(uid_t user, const platform::Packet &packet)
{
    if (!packet.sender || packet.sender->uid != user) {
        return EPERM;
    }
    if (!packet.isWhole) {
        return E2BIG;
    }
    const auto request = platform::decodeToolRequest(packet.bytes);
    if (!request || packet.descriptors.size() > 2) {
        return EINVAL;
    }
    if (request->isEmpty()) {
        return 0;
    }
    const bool hasOutput = packet.descriptors.size() == 2;
    if (hasOutput && !isPipe(packet.descriptors[1])) {
        return EINVAL;
    }
    return startTool(user, *request, hasOutput ? packet.descriptors[1].number() : -1);
}

void answer(const platform::Packet &packet, std::int32_t result)
{
    if (packet.descriptors.empty() || !isPipe(packet.descriptors.front())) {
        return;
    }
    std::array<char, sizeof result> bytes{};
    std::memcpy(bytes.data(), &result, sizeof result);
    const int pipe = packet.descriptors.front().number();
    ::fcntl(pipe, F_SETFL, O_NONBLOCK); // a full one is the client's own affair
    while (::write(pipe, bytes.data(), bytes.size()) < 0 && errno == EINTR) {
    }
}

} // namespace

int main()
{
    const auto user = userOfPkexec();
    if (!user || !wasStartedBy(*user)) {
        std::fputs("authorization-helper is started by pkexec only, for a program of Ostrel's\n",
                   stderr);
        return EXIT_FAILURE;
    }
    forgetStarter();
    ::openlog("ostrel-authorization-helper", LOG_PID, LOG_AUTHPRIV);
    const auto requests = openForRequests();
    if (!requests.isOpen()) {
        return EXIT_FAILURE;
    }
    leaveStandardDescriptors();
    while (const auto packet = platform::receivePacket(requests.number())) {
        answer(*packet, serve(*user, *packet));
    }
    return EXIT_SUCCESS;
}
