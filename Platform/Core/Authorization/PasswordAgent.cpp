// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Authorization/PasswordAgent.h"

#include "Platform/Core/Basics/AccountEntry.h"
#include "Platform/Core/Basics/DescriptorPair.h"
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Processes/ChildExit.h"
#include "Platform/Core/Processes/SpawnProgram.h"

#include <QByteArrayList>

#include <fcntl.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace platform {
namespace {

constexpr const char *objectPath = "/com/corvane/PasswordAgent";
constexpr const char *ourAction = PLATFORM_ADMINISTER_ACTION;
constexpr const char *service = "org.freedesktop.PolicyKit1";
constexpr const char *refusal = "org.freedesktop.PolicyKit1.Error.Failed";

// polkit's own program for talking to PAM, setuid root.
constexpr const char *pamHelper = "/usr/lib/polkit-1/polkit-agent-helper-1";

constexpr std::chrono::seconds busTimeout{25}; // what D-Bus gives a call

// How long PAM may be silent; a module in front of the password's may wait for a finger or a card.
constexpr std::chrono::milliseconds maxReplyTime{60'000};

// Start time of this process in clock ticks after boot: field 22 of its stat file (proc(5)),
// counted behind the name, which ends at the last parenthesis.
std::uint64_t startTimeOfThisProcess()
{
    const auto text =
        contentsOfFile(QStringLiteral("/proc/self/stat"), 4096).value_or(QByteArray());
    const auto fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return fields.size() > 19 ? fields.at(19).toULongLong() : 0;
}

// As one line, without a copy of the text, which may be the password.
bool sendLine(int socket, const QByteArray &text)
{
    char lineBreak = '\n';
    std::array<iovec, 2> parts{
        iovec{const_cast<char *>(text.constData()), static_cast<std::size_t>(text.size())},
        iovec{&lineBreak, 1}};
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = parts.size();
    ssize_t sent = -1;
    do {
        sent = ::sendmsg(socket, &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == text.size() + 1;
}

// The next line without its break; nothing at the end and after too long a silence.
std::optional<QByteArray> receiveLine(int socket, QByteArray *pending)
{
    for (;;) {
        const auto end = pending->indexOf('\n');
        if (end >= 0) {
            const auto line = pending->left(end);
            pending->remove(0, end + 1);
            return line;
        }
        pollfd readable{socket, POLLIN, 0};
        const int ready = ::poll(&readable, 1, static_cast<int>(maxReplyTime.count()));
        if (ready == 0 || (ready < 0 && errno != EINTR)) {
            return {};
        }
        std::array<char, 1024> buffer{};
        const auto size = ::recv(socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (size == 0 || (size < 0 && errno != EINTR && errno != EAGAIN)) {
            return {};
        }
        if (size > 0) {
            pending->append(buffer.data(), static_cast<int>(size));
        }
    }
}

// The helper's side of PAM: a prompt that hides what is typed wants the password.
bool answerPrompts(int socket, const QByteArray &cookie, const QByteArray &user,
                   const QByteArray &password)
{
    QByteArray pending;
    if (!sendLine(socket, cookie)) {
        return false;
    }
    bool passwordSent = false;
    while (const auto line = receiveLine(socket, &pending)) {
        if (line->startsWith("PAM_PROMPT_ECHO_OFF")) {
            if (passwordSent || !sendLine(socket, password)) {
                return false; // asked again, or for something else: there is nothing more to say
            }
            passwordSent = true;
        } else if (line->startsWith("PAM_PROMPT_ECHO_ON")) {
            if (!sendLine(socket, user)) {
                return false;
            }
        } else if (*line == "SUCCESS") {
            return true;
        } else if (*line == "FAILURE") {
            return false;
        }
    }
    return false;
}

} // namespace

PasswordAgent::PasswordAgent(const QString &user, const QString &password)
    : m_user(user.toUtf8()), m_password(password.toUtf8())
{
}

PasswordAgent::~PasswordAgent()
{
    if (::sd_bus_is_ready(m_bus.get()) > 0) {
        ::sd_bus_flush(m_bus.get()); // else nothing was asked that could be answered
    }
    // Nothing shares these bytes: they are only ever passed by reference.
    ::explicit_bzero(m_password.data(), static_cast<std::size_t>(m_password.size()));
}

bool PasswordAgent::start(QString *error)
{
    const auto beginAuthentication = [](sd_bus_message *message, void *agent, sd_bus_error *) {
        return static_cast<const PasswordAgent *>(agent)->answer(message);
    };
    const auto cancelAuthentication = [](sd_bus_message *message, void *, sd_bus_error *) {
        return ::sd_bus_reply_method_return(message, "");
    };
    static const std::array<sd_bus_vtable, 4> methods{{
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("BeginAuthentication", "sssa{ss}sa(sa{sv})", "", beginAuthentication,
                      SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("CancelAuthentication", "s", "", cancelAuthentication,
                      SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    }};
    sd_bus_message *reply = nullptr;
    sd_bus_error failure = SD_BUS_ERROR_NULL;
    const char *owner = nullptr;
    // Not sd_bus_open_system(), which the environment can lead elsewhere.
    int result =
        m_bus.open("unix:path=/run/dbus/system_bus_socket", BusConnection::Kind::MessageBus,
                   std::chrono::steady_clock::now() + busTimeout);
    auto *bus = m_bus.get();
    if (result >= 0) {
        result = ::sd_bus_add_object_vtable(bus, nullptr, objectPath,
                                            "org.freedesktop.PolicyKit1.AuthenticationAgent",
                                            methods.data(), this);
    }
    if (result >= 0) {
        result = ::sd_bus_call_method(
            bus, service, "/org/freedesktop/PolicyKit1/Authority",
            "org.freedesktop.PolicyKit1.Authority", "RegisterAuthenticationAgent", &failure,
            nullptr, "(sa{sv})ss", "unix-process", 3, "pid", "u",
            static_cast<std::uint32_t>(::getpid()), "start-time", "t", startTimeOfThisProcess(),
            "uid", "i", static_cast<std::int32_t>(::getuid()), "C", objectPath);
    }
    if (result >= 0) {
        result = ::sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                      "org.freedesktop.DBus", "GetNameOwner", &failure, &reply, "s",
                                      service);
    }
    if (result >= 0) {
        result = ::sd_bus_message_read(reply, "s", &owner);
        m_authority = owner;
    }
    if (result < 0) {
        *error = QString::fromUtf8(failure.message != nullptr ? failure.message
                                                              : std::strerror(-result));
    }
    ::sd_bus_message_unref(reply);
    ::sd_bus_error_free(&failure);
    return result >= 0;
}

pollfd PasswordAgent::events() const
{
    const auto events = ::sd_bus_get_events(m_bus.get());
    return {::sd_bus_get_fd(m_bus.get()), static_cast<short>(events), 0};
}

bool PasswordAgent::takeEvents()
{
    int result = 1;
    while (result > 0) {
        result = ::sd_bus_process(m_bus.get(), nullptr);
    }
    return result == 0;
}

int PasswordAgent::answer(sd_bus_message *message) const
{
    QByteArray cookie;
    if (mayAnswer(message, &cookie) && authenticate(cookie)) {
        return ::sd_bus_reply_method_return(message, "");
    }
    return ::sd_bus_reply_method_errorf(message, refusal, "Authentication failed");
}

// Answers only polkit, only about our own action, and only where this account may decide it.
bool PasswordAgent::mayAnswer(sd_bus_message *message, QByteArray *cookie) const
{
    const char *action = nullptr;
    const char *text = nullptr;
    if (m_authority != ::sd_bus_message_get_sender(message) ||
        ::sd_bus_message_read(message, "sss", &action, nullptr, nullptr) < 0 ||
        std::strcmp(action, ourAction) != 0 || ::sd_bus_message_skip(message, "a{ss}") < 0 ||
        ::sd_bus_message_read(message, "s", &text) < 0) {
        return false;
    }
    *cookie = text;
    return isAmongIdentities(message);
}

bool PasswordAgent::isAmongIdentities(sd_bus_message *message) const
{
    const AccountEntry account(::getpwnam_r, m_user.constData());
    bool found = false;
    if (!account.exists() || ::sd_bus_message_enter_container(message, 'a', "(sa{sv})") < 0) {
        return false;
    }
    while (::sd_bus_message_enter_container(message, 'r', "sa{sv}") > 0) {
        const char *kind = nullptr;
        ::sd_bus_message_read(message, "s", &kind);
        ::sd_bus_message_enter_container(message, 'a', "{sv}");
        while (::sd_bus_message_enter_container(message, 'e', "sv") > 0) {
            const char *key = nullptr;
            std::uint32_t uid = 0;
            ::sd_bus_message_read(message, "s", &key);
            if (key != nullptr && std::strcmp(key, "uid") == 0 &&
                ::sd_bus_message_read(message, "v", "u", &uid) > 0) {
                found = found || (std::strcmp(kind, "unix-user") == 0 && uid == account->pw_uid);
            } else {
                ::sd_bus_message_skip(message, "v");
            }
            ::sd_bus_message_exit_container(message);
        }
        ::sd_bus_message_exit_container(message);
        ::sd_bus_message_exit_container(message);
    }
    return found;
}

bool PasswordAgent::authenticate(const QByteArray &cookie) const
{
    // One line is what the helper takes.
    if (m_password.contains('\n') || m_password.contains('\0') || cookie.contains('\n')) {
        return false;
    }
    auto ends = openSocketPair(SOCK_STREAM);
    pid_t process = -1;
    if (!ends || spawnProgram({pamHelper,
                               {pamHelper, m_user.toStdString()},
                               cleanEnvironment(),
                               {ends->second.fd(), ends->second.fd(), nullDevice}},
                              &process) != 0) {
        return false;
    }
    ends->second.close();
    const auto helper = std::make_shared<ChildExit>(process);
    const bool accepted = answerPrompts(ends->first.fd(), cookie, m_user, m_password);
    helper->reapInBackground(); // it ends by itself, at the latest when it cannot read any more
    return accepted;
}

} // namespace platform
