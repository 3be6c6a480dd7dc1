// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/system_profiler/NetworkManagerNames.h"

#include "Platform/Core/Basics/Descriptor.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>

#include <cerrno>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

using Clock = std::chrono::steady_clock;

namespace {

constexpr std::string_view busSocket = "/run/dbus/system_bus_socket";
constexpr auto networkManager = "org.freedesktop.NetworkManager";
constexpr std::string_view deviceInterface = "org.freedesktop.NetworkManager.Device";
constexpr std::string_view activeInterface = "org.freedesktop.NetworkManager.Connection.Active";

struct EndBus {
    // Without the wait for what is still to be sent.
    void operator()(sd_bus *bus) const { ::sd_bus_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, EndBus>;

struct FreeMessage {
    void operator()(sd_bus_message *message) const { ::sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, FreeMessage>;

// What one object of NetworkManager says of itself.
struct Object {
    std::string interface;  // of a device
    std::string connection; // of a device: the path of the one that it has up
    std::string name;       // of a connection
};

platform::Descriptor connectToBus()
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    busSocket.copy(&address.sun_path[0], busSocket.size());
    platform::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto *generic =
        reinterpret_cast<const sockaddr *>(&address); // NOLINT(*-reinterpret-cast)
    if (socket.isOpen() && ::connect(socket.number(), generic, sizeof address) != 0) {
        socket.close();
    }
    return socket;
}

// The library's own calls would wait for 90 seconds until the bus says its first word.
bool processUntil(sd_bus *bus, Clock::time_point end, const std::function<bool()> &done)
{
    while (!done()) {
        auto result = ::sd_bus_process(bus, nullptr);
        if (result == 0) {
            const auto left =
                std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now()).count();
            result = left > 0 ? ::sd_bus_wait(bus, static_cast<std::uint64_t>(left)) : -ETIMEDOUT;
        }
        if (result < 0 && result != -EINTR) {
            return false;
        }
    }
    return true;
}

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

int keepReply(sd_bus_message *message, void *reply, sd_bus_error * /*error*/)
{
    static_cast<Message *>(reply)->reset(::sd_bus_message_ref(message));
    return 0;
}

// One question for all that NetworkManager knows, whatever the number of interfaces. Nothing where
// there is no answer; nobody is started for it.
Message ask(sd_bus *bus, Clock::time_point end)
{
    Message reply;
    sd_bus_message *call = nullptr;
    if (::sd_bus_message_new_method_call(bus, &call, networkManager, "/org/freedesktop",
                                         "org.freedesktop.DBus.ObjectManager",
                                         "GetManagedObjects") < 0) {
        return {};
    }
    const Message owner(call);
    ::sd_bus_message_set_auto_start(call, 0);
    if (::sd_bus_call_async(bus, nullptr, call, keepReply, &reply, 0) < 0 ||
        !processUntil(bus, end, [&reply] { return reply != nullptr; }) ||
        ::sd_bus_message_is_method_error(reply.get(), nullptr) != 0) {
        return {};
    }
    return reply;
}

} // namespace

std::map<std::string, std::string> networkManagerNames(std::chrono::milliseconds time)
{
    const auto end = Clock::now() + time;
    auto socket = connectToBus();
    sd_bus *made = nullptr;
    if (!socket.isOpen() || ::sd_bus_new(&made) < 0) {
        return {};
    }
    const Bus bus(made);
    const auto number = socket.release();
    if (::sd_bus_set_fd(made, number, number) < 0 || ::sd_bus_set_bus_client(made, 1) < 0 ||
        ::sd_bus_start(made) < 0 ||
        !processUntil(made, end, [made] { return ::sd_bus_is_ready(made) > 0; })) {
        return {};
    }
    const auto reply = ask(made, end);
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
