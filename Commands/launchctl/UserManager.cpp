// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/launchctl/UserManager.h"

#include "Commands/Jobs/LaunchSession.h"
#include "Platform/Core/Basics/Descriptor.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace {

constexpr auto destination = "org.freedesktop.systemd1";
constexpr auto managerPath = "/org/freedesktop/systemd1";
constexpr auto managerInterface = "org.freedesktop.systemd1.Manager";
constexpr auto unitInterface = "org.freedesktop.systemd1.Unit";
constexpr auto serviceInterface = "org.freedesktop.systemd1.Service";

class BusError {
public:
    BusError() = default;
    ~BusError() { ::sd_bus_error_free(&m_error); }
    BusError(const BusError &) = delete;
    BusError &operator=(const BusError &) = delete;
    sd_bus_error *out() { return &m_error; }

    // In words; the number is what the call answered.
    QString text(int number) const
    {
        if (number == -ETIMEDOUT) {
            return QStringLiteral("the service manager does not answer");
        }
        return m_error.message != nullptr ? QString::fromUtf8(m_error.message)
                                          : QString::fromLocal8Bit(std::strerror(
                                                -number)); // NOLINT(concurrency-mt-unsafe)
    }

private:
    sd_bus_error m_error = SD_BUS_ERROR_NULL;
};

struct FreeMessage {
    void operator()(sd_bus_message *message) const { ::sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, FreeMessage>;

// A connected socket; negative with the reason in errno.
platform::Descriptor connectTo(const QByteArray &path)
{
    sockaddr_un address{};
    if (static_cast<std::size_t>(path.size()) >= sizeof address.sun_path) {
        errno = ENOENT;
        return {};
    }
    address.sun_family = AF_UNIX;
    std::memcpy(&address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    platform::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto *generic =
        reinterpret_cast<const sockaddr *>(&address); // NOLINT(*-reinterpret-cast)
    if (socket.isOpen() && ::connect(socket.number(), generic, sizeof address) != 0) {
        const auto reason = errno;
        socket.close();
        errno = reason;
    }
    return socket;
}

} // namespace

UserManager::UserManager(const Deadline &deadline) : m_deadline(deadline)
{
    ::sd_bus_new(&m_bus);
}

UserManager::~UserManager()
{
    ::sd_bus_close(m_bus);
    ::sd_bus_unref(m_bus);
}

std::unique_ptr<UserManager> UserManager::connect(const Deadline &deadline, QString *error)
{
    const auto folder = platform::sessionRuntimeFolder();
    if (folder.isEmpty()) {
        return nullptr;
    }
    auto socket = connectTo(folder + "/systemd/private");
    if (!socket.isOpen()) {
        // No socket, or one that a manager has left behind. A full queue is a manager's.
        if (errno != ENOENT && errno != ECONNREFUSED && errno != ENOTDIR) {
            *error = BusError().text(errno == EAGAIN ? -ETIMEDOUT : -errno);
        }
        return nullptr;
    }
    std::unique_ptr<UserManager> manager(new UserManager(deadline));
    auto *bus = manager->m_bus;
    const auto number = socket.release();
    const auto result = ::sd_bus_set_fd(bus, number, number);
    const auto started = result < 0 ? result : ::sd_bus_start(bus);
    const auto matched =
        started < 0 ? started
                    : ::sd_bus_match_signal(bus, nullptr, nullptr, managerPath, managerInterface,
                                            "JobRemoved", &UserManager::jobRemoved, manager.get());
    *error = matched < 0 ? BusError().text(matched) : manager->waitUntilReady();
    if (!error->isNull()) {
        return nullptr;
    }
    BusError reason;
    manager->limitNextCall();
    const auto subscribed = ::sd_bus_call_method(bus, destination, managerPath, managerInterface,
                                                 "Subscribe", reason.out(), nullptr, nullptr);
    if (subscribed < 0 &&
        ::sd_bus_error_has_name(reason.out(), "org.freedesktop.systemd1.AlreadySubscribed") == 0) {
        *error = reason.text(subscribed);
        return nullptr;
    }
    return manager;
}

// The library itself would wait for 90 seconds until the other side says its first word.
QString UserManager::waitUntilReady()
{
    while (::sd_bus_is_ready(m_bus) == 0) {
        auto result = ::sd_bus_process(m_bus, nullptr);
        if (result == 0 && m_deadline.isOver()) {
            result = -ETIMEDOUT;
        } else if (result == 0) {
            result = ::sd_bus_wait(m_bus, microsecondsLeft());
        }
        if (result < 0 && result != -EINTR) {
            return BusError().text(result);
        }
    }
    return {};
}

quint64 UserManager::microsecondsLeft() const
{
    using std::chrono::microseconds;
    return static_cast<quint64>(
        std::chrono::duration_cast<microseconds>(m_deadline.left()).count());
}

void UserManager::limitNextCall()
{
    ::sd_bus_set_method_call_timeout(m_bus, microsecondsLeft() + 1);
}

std::optional<QByteArray> UserManager::objectPath(const QByteArray &unit, QString *error)
{
    BusError reason;
    sd_bus_message *reply = nullptr;
    limitNextCall();
    auto result = ::sd_bus_call_method(m_bus, destination, managerPath, managerInterface,
                                       "LoadUnit", reason.out(), &reply, "s", unit.constData());
    const Message owner(reply);
    const char *path = nullptr;
    if (result >= 0) {
        result = ::sd_bus_message_read_basic(reply, 'o', static_cast<void *>(&path));
    }
    if (result < 0) {
        *error = reason.text(result);
        return std::nullopt;
    }
    return QByteArray(path);
}

std::optional<UnitState> UserManager::unit(const QByteArray &name, QString *error)
{
    const auto path = objectPath(name, error);
    if (!path) {
        return std::nullopt;
    }
    UnitState state;
    BusError reason;
    auto result = 0;
    const auto text = [&](const char *interface, const char *property, QByteArray &value) {
        char *read = nullptr;
        limitNextCall();
        if (result >= 0) {
            result = ::sd_bus_get_property_string(m_bus, destination, path->constData(), interface,
                                                  property, reason.out(), &read);
        }
        value = read;
        std::free(read); // NOLINT(*-no-malloc,*-owning-memory)
    };
    const auto number = [&](const char *interface, const char *property, char kind, void *value) {
        limitNextCall();
        if (result >= 0) {
            result = ::sd_bus_get_property_trivial(m_bus, destination, path->constData(), interface,
                                                   property, reason.out(), kind, value);
        }
    };
    // One by one: bytes that are no UTF-8 in the command line would spoil an answer with all.
    text(unitInterface, "LoadState", state.loadState);
    text(unitInterface, "ActiveState", state.activeState);
    text(unitInterface, "SubState", state.subState);
    text(unitInterface, "FragmentPath", state.fragmentPath);
    text(unitInterface, "SourcePath", state.sourcePath);
    number(unitInterface, "InactiveExitTimestampMonotonic", 't', &state.startedAt);
    text(serviceInterface, "Result", state.result);
    number(serviceInterface, "MainPID", 'u', &state.mainPid);
    number(serviceInterface, "ExecMainCode", 'i', &state.exitCode);
    number(serviceInterface, "ExecMainStatus", 'i', &state.exitStatus);
    number(serviceInterface, "NRestarts", 'u', &state.restarts);
    if (result < 0) {
        *error = reason.text(result);
        return std::nullopt;
    }
    return state;
}

std::optional<QByteArrayList> UserManager::unitNames(const QByteArray &pattern, QString *error)
{
    BusError reason;
    sd_bus_message *reply = nullptr;
    limitNextCall();
    auto result = ::sd_bus_call_method(m_bus, destination, managerPath, managerInterface,
                                       "ListUnitsByPatterns", reason.out(), &reply, "asas", 0, 1,
                                       pattern.constData());
    const Message owner(reply);
    QByteArrayList names;
    if (result >= 0) {
        result = ::sd_bus_message_enter_container(reply, 'a', "(ssssssouso)");
    }
    while (result > 0) {
        const char *name = nullptr;
        result = ::sd_bus_message_enter_container(reply, 'r', "ssssssouso");
        if (result > 0) {
            result = ::sd_bus_message_read_basic(reply, 's', static_cast<void *>(&name));
            names << QByteArray(name);
        }
        if (result > 0) {
            result = ::sd_bus_message_skip(reply, "sssssouso");
        }
        if (result > 0) {
            ::sd_bus_message_exit_container(reply);
        }
    }
    if (result < 0) {
        *error = reason.text(result);
        return std::nullopt;
    }
    return names;
}

QString UserManager::reload()
{
    BusError reason;
    limitNextCall();
    const auto result = ::sd_bus_call_method(m_bus, destination, managerPath, managerInterface,
                                             "Reload", reason.out(), nullptr, nullptr);
    return result < 0 ? reason.text(result) : QString();
}

void UserManager::resetFailed(const QByteArray &unit)
{
    limitNextCall();
    ::sd_bus_call_method(m_bus, destination, managerPath, managerInterface, "ResetFailedUnit",
                         nullptr, nullptr, "s", unit.constData());
}

quint64 UserManager::identity()
{
    quint64 start = 0;
    limitNextCall();
    ::sd_bus_get_property_trivial(m_bus, destination, managerPath, managerInterface,
                                  "UserspaceTimestampMonotonic", nullptr, 't', &start);
    return start;
}

QString UserManager::loadError(const QByteArray &unit)
{
    QString text;
    const auto path = objectPath(unit, &text);
    sd_bus_message *reply = nullptr;
    limitNextCall();
    if (path && ::sd_bus_get_property(m_bus, destination, path->constData(), unitInterface,
                                      "LoadError", nullptr, &reply, "(ss)") >= 0) {
        const char *name = nullptr;
        const char *words = nullptr;
        ::sd_bus_message_read(reply, "(ss)", &name, &words);
        text = QString::fromUtf8(words);
    }
    const Message owner(reply);
    return text;
}

int UserManager::jobRemoved(sd_bus_message *message, void *manager, sd_bus_error * /*error*/)
{
    quint32 number = 0;
    const char *job = nullptr;
    const char *unit = nullptr;
    const char *result = nullptr;
    if (::sd_bus_message_read(message, "uoss", &number, &job, &unit, &result) >= 0) {
        static_cast<UserManager *>(manager)->m_results.insert(job, result);
    }
    return 0;
}

QString UserManager::runJob(const char *method, const QByteArray &unit)
{
    BusError reason;
    sd_bus_message *reply = nullptr;
    m_results.clear();
    limitNextCall();
    auto result = ::sd_bus_call_method(m_bus, destination, managerPath, managerInterface, method,
                                       reason.out(), &reply, "ss", unit.constData(), "replace");
    const Message owner(reply);
    const char *job = nullptr;
    if (result >= 0) {
        result = ::sd_bus_message_read_basic(reply, 'o', static_cast<void *>(&job));
    }
    return result < 0 ? reason.text(result) : waitForJob(job);
}

QString UserManager::waitForJob(const QByteArray &job)
{
    while (!m_results.contains(job)) {
        auto result = ::sd_bus_process(m_bus, nullptr);
        if (result == 0 && m_deadline.isOver()) {
            return QStringLiteral("the service manager has not done it in time");
        }
        if (result == 0) {
            result = ::sd_bus_wait(m_bus, microsecondsLeft());
        }
        if (result < 0 && result != -EINTR) {
            return BusError().text(result);
        }
    }
    const auto words = m_results.value(job);
    return words == "done"
               ? QString()
               : QStringLiteral("the service manager says \"%1\"").arg(QString::fromUtf8(words));
}
