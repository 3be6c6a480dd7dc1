// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/system_profiler/NetworkManagerNames.h"

#include "Platform/Core/Bus/BusConnection.h"

#include <string_view>

namespace {

using platform::BusConnection;
using platform::BusMessage;

constexpr auto systemBus = "unix:path=/run/dbus/system_bus_socket";
constexpr auto networkManager = "org.freedesktop.NetworkManager";
constexpr std::string_view deviceInterface = "org.freedesktop.NetworkManager.Device";
constexpr std::string_view activeInterface = "org.freedesktop.NetworkManager.Connection.Active";

// What one object of NetworkManager says of itself.
struct Object {
    std::string interface;  // of a device
    std::string connection; // of a device: the path of the one that it has up
    std::string name;       // of a connection
};

// The text of a variant; where it holds something else, it is skipped.
int readText(sd_bus_message *message, char type, std::string &text)
{
    const char signature[] = {type, '\0'}; // NOLINT(modernize-avoid-c-arrays)
    if (::sd_bus_message_verify_type(message, 'v', &signature[0]) <= 0) {
        return ::sd_bus_message_skip(message, "v");
    }
    const char *value = nullptr;
    ::sd_bus_message_enter_container(message, 'v', &signature[0]);
    const auto result = ::sd_bus_message_read_basic(message, type, static_cast<void *>(&value));
    text = value != nullptr ? value : "";
    ::sd_bus_message_exit_container(message);
    return result;
}

int readProperty(sd_bus_message *message, std::string_view interface, Object &object)
{
    const char *name = nullptr;
    auto result = ::sd_bus_message_read_basic(message, 's', static_cast<void *>(&name));
    const std::string_view property(name != nullptr ? name : "");
    if (result < 0) {
        return result;
    }
    if (interface == deviceInterface && property == "Interface") {
        return readText(message, 's', object.interface);
    }
    if (interface == deviceInterface && property == "ActiveConnection") {
        return readText(message, 'o', object.connection);
    }
    if (interface == activeInterface && property == "Id") {
        return readText(message, 's', object.name);
    }
    return ::sd_bus_message_skip(message, "v");
}

// Reads each entry of the dictionary that comes next.
template <typename Entry>
int readDictionary(sd_bus_message *message, const char *contents, const Entry &readEntry)
{
    const auto type = '{' + std::string(contents) + '}';
    auto result = ::sd_bus_message_enter_container(message, 'a', type.c_str());
    while (result >= 0) {
        result = ::sd_bus_message_enter_container(message, 'e', contents);
        if (result <= 0) {
            break;
        }
        result = readEntry();
        if (result >= 0) {
            result = ::sd_bus_message_exit_container(message);
        }
    }
    return result < 0 ? result : ::sd_bus_message_exit_container(message);
}

std::map<std::string, Object> readObjects(sd_bus_message *message)
{
    std::map<std::string, Object> objects;
    const auto readInterface = [&](Object &object) {
        const char *interface = nullptr;
        const auto result =
            ::sd_bus_message_read_basic(message, 's', static_cast<void *>(&interface));
        return result < 0 ? result : readDictionary(message, "sv", [&] {
            return readProperty(message, interface, object);
        });
    };
    const auto readObject = [&] {
        const char *path = nullptr;
        const auto result = ::sd_bus_message_read_basic(message, 'o', static_cast<void *>(&path));
        return result < 0 ? result : readDictionary(message, "sa{sv}", [&] {
            return readInterface(objects[path]);
        });
    };
    return readDictionary(message, "oa{sa{sv}}", readObject) < 0 ? std::map<std::string, Object>()
                                                                 : objects;
}

// One question for all that NetworkManager knows, whatever the number of interfaces. Nothing where
// there is no answer; nobody is started for it.
BusMessage ask(sd_bus *bus, BusConnection::Deadline deadline)
{
    sd_bus_message *call = nullptr;
    sd_bus_message *reply = nullptr;
    if (::sd_bus_message_new_method_call(bus, &call, networkManager, "/org/freedesktop",
                                         "org.freedesktop.DBus.ObjectManager",
                                         "GetManagedObjects") < 0) {
        return {};
    }
    const BusMessage owner(call);
    ::sd_bus_message_set_auto_start(call, 0);
    ::sd_bus_call(bus, call, BusConnection::timeLeft(deadline), nullptr, &reply);
    return BusMessage(reply);
}

} // namespace

std::map<std::string, std::string> networkManagerNames(std::chrono::milliseconds time)
{
    const auto deadline = std::chrono::steady_clock::now() + time;
    BusConnection bus;
    if (bus.open(systemBus, BusConnection::Kind::MessageBus, deadline) < 0) {
        return {};
    }
    const auto reply = ask(bus.get(), deadline);
    const auto objects =
        reply != nullptr ? readObjects(reply.get()) : std::map<std::string, Object>();
    std::map<std::string, std::string> names;
    for (const auto &[path, device] : objects) {
        const auto connection = objects.find(device.connection);
        if (!device.interface.empty() && connection != objects.end() &&
            !connection->second.name.empty()) {
            names[device.interface] = connection->second.name;
        }
    }
    return names;
}
