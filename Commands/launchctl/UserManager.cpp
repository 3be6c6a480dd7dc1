// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/launchctl/UserManager.h"

#include "Commands/Jobs/LaunchSession.h"

#include <cerrno>
#include <cstdlib>

using platform::BusConnection;
using platform::BusMessage;

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
                                          : qt_error_string(-number);
    }

private:
    sd_bus_error m_error = SD_BUS_ERROR_NULL;
};

} // namespace

std::unique_ptr<UserManager> UserManager::connect(BusConnection::Deadline deadline, QString *error)
{
    const auto folder = platform::sessionRuntimeFolder();
    if (folder.isEmpty()) {
        return nullptr;
    }
    std::unique_ptr<UserManager> manager(new UserManager(deadline));
    const QByteArray address = "unix:path=" + folder.toPercentEncoding("/") + "/systemd/private";
    const auto result =
        manager->m_bus.open(address.constData(), BusConnection::Kind::Peer, deadline);
    // No socket, or one that a manager has left behind.
    if (result == -ENOENT || result == -ENOTDIR || result == -E2BIG || result == -ENAMETOOLONG ||
        result == -ECONNREFUSED) {
        return nullptr;
    }
    if (result < 0) {
        *error = BusError().text(result == -EAGAIN ? -ETIMEDOUT : result); // its queue is full
        return nullptr;
    }
    ::sd_bus_match_signal(manager->m_bus.get(), nullptr, nullptr, managerPath, managerInterface,
                          "JobRemoved", &UserManager::jobRemoved, manager.get());
    return manager->call("Subscribe", error, nullptr) != nullptr ? std::move(manager) : nullptr;
}

sd_bus *UserManager::limitedBus() const
{
    ::sd_bus_set_method_call_timeout(m_bus.get(), BusConnection::timeLeft(m_deadline));
    return m_bus.get();
}

template <typename... Arguments>
BusMessage UserManager::call(const char *method, QString *error, const char *types,
                             Arguments... arguments)
{
    BusError reason;
    sd_bus_message *reply = nullptr;
    const auto result =
        ::sd_bus_call_method(limitedBus(), destination, managerPath, managerInterface, method,
                             reason.out(), &reply, types, arguments...);
    if (result < 0) {
        *error = reason.text(result);
    }
    return BusMessage(reply);
}

std::optional<QByteArray> UserManager::objectPath(const QByteArray &unit, QString *error)
{
    const auto reply = call("LoadUnit", error, "s", unit.constData());
    const char *path = nullptr;
    if (reply != nullptr) {
        ::sd_bus_message_read(reply.get(), "o", &path);
    }
    return path != nullptr ? std::optional(QByteArray(path)) : std::nullopt;
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
        if (result >= 0) {
            result = ::sd_bus_get_property_string(limitedBus(), destination, path->constData(),
                                                  interface, property, reason.out(), &read);
        }
        value = read;
        std::free(read); // NOLINT(*-no-malloc,*-owning-memory)
    };
    const auto number = [&](const char *interface, const char *property, char kind, void *value) {
        if (result >= 0) {
            result = ::sd_bus_get_property_trivial(limitedBus(), destination, path->constData(),
                                                   interface, property, reason.out(), kind, value);
        }
    };
    // One by one: a unit of others may hold bytes that are not UTF-8, which spoil an answer with
    // all.
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
    const auto reply = call("ListUnitsByPatterns", error, "asas", 0, 1, pattern.constData());
    if (reply == nullptr) {
        return std::nullopt;
    }
    QByteArrayList names;
    const char *name = nullptr;
    ::sd_bus_message_enter_container(reply.get(), 'a', "(ssssssouso)");
    while (::sd_bus_message_read(reply.get(), "(ssssssouso)", &name, nullptr, nullptr, nullptr,
                                 nullptr, nullptr, nullptr, nullptr, nullptr, nullptr) > 0) {
        names << QByteArray(name);
    }
    return names;
}

QString UserManager::reload()
{
    QString error;
    call("Reload", &error, nullptr);
    return error;
}

QByteArrayList UserManager::environment()
{
    char **variables = nullptr;
    QByteArrayList result;
    if (::sd_bus_get_property_strv(limitedBus(), destination, managerPath, managerInterface,
                                   "Environment", nullptr, &variables) < 0) {
        return result;
    }
    for (auto **variable = variables; *variable != nullptr; ++variable) { // NOLINT(*-arithmetic)
        result << QByteArray(*variable);
        std::free(*variable); // NOLINT(*-no-malloc,*-owning-memory)
    }
    std::free(static_cast<void *>(variables)); // NOLINT(*-no-malloc,*-owning-memory)
    return result;
}

void UserManager::addToEnvironment(const QByteArray &variable)
{
    QString ignored;
    call("SetEnvironment", &ignored, "as", 1, variable.constData());
}

void UserManager::resetFailed(const QByteArray &unit)
{
    QString ignored;
    call("ResetFailedUnit", &ignored, "s", unit.constData());
}

quint64 UserManager::identity()
{
    quint64 start = 0;
    ::sd_bus_get_property_trivial(limitedBus(), destination, managerPath, managerInterface,
                                  "UserspaceTimestampMonotonic", nullptr, 't', &start);
    return start;
}

QString UserManager::loadError(const QByteArray &unit)
{
    QString text;
    const auto path = objectPath(unit, &text);
    sd_bus_message *reply = nullptr;
    if (path && ::sd_bus_get_property(limitedBus(), destination, path->constData(), unitInterface,
                                      "LoadError", nullptr, &reply, "(ss)") >= 0) {
        const char *words = nullptr;
        ::sd_bus_message_read(reply, "(ss)", nullptr, &words);
        text = QString::fromUtf8(words);
    }
    const BusMessage owner(reply);
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
    QString error;
    m_results.clear();
    const auto reply = call(method, &error, "ss", unit.constData(), "replace");
    if (reply == nullptr) {
        return error;
    }
    const char *job = nullptr;
    ::sd_bus_message_read(reply.get(), "o", &job);
    const auto result = m_bus.processUntil([&] { return m_results.contains(job); }, m_deadline);
    if (result == -ETIMEDOUT) {
        return QStringLiteral("the service manager did not finish in time");
    }
    if (result < 0) {
        return BusError().text(result);
    }
    const auto words = m_results.value(job);
    return words == "done"
               ? QString()
               : QStringLiteral("the service manager says \"%1\"").arg(QString::fromUtf8(words));
}
