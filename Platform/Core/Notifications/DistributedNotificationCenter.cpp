// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Notifications/DistributedNotificationCenter.h"

#include "Platform/Core/Bus/DBusValue.h"
#include "Platform/Core/Text/Console.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>

#include <mutex>

namespace platform {
namespace {

QString objectPath()
{
    return QStringLiteral("/com/corvane/DistributedNotifications");
}

QString interfaceName()
{
    return QStringLiteral("com.corvane.DistributedNotifications");
}

QString signalName()
{
    return QStringLiteral("Posted");
}

void reportNoSessionBus(const QDBusConnection &bus)
{
    static std::once_flag once;
    std::call_once(once, [&bus] {
        const auto reason = bus.lastError().message();
        consoleLog(QStringLiteral("Distributed notifications are lost: no session bus (%@)"),
                   reason.isEmpty() ? QStringLiteral("disconnected") : reason);
    });
}

// Messages leave on a thread of the bus connection. The answer to a call means that all before it
// are gone.
void waitUntilAllIsSent()
{
    constexpr int maxWait = 1000; // milliseconds
    const auto bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        bus.call(QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                QStringLiteral("/org/freedesktop/DBus"),
                                                QStringLiteral("org.freedesktop.DBus.Peer"),
                                                QStringLiteral("Ping")),
                 QDBus::Block, maxWait);
    }
}

} // namespace

void postDistributedNotification(const Notification &notification)
{
    const auto userInfo = dbusDictionary(notification.userInfo);
    if (!userInfo) {
        consoleLog(QStringLiteral("Distributed notification %@ is lost: too much user information"),
                   notification.name);
        return;
    }
    auto message = QDBusMessage::createSignal(objectPath(), interfaceName(), signalName());
    message << notification.name << notification.object.toString() << *userInfo;
    const auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.send(message)) {
        reportNoSessionBus(bus);
        return;
    }
    // A program may end right after its last notification.
    static std::once_flag once;
    std::call_once(once, [] { qAddPostRoutine(waitUntilAllIsSent); });
}

DistributedObserver::DistributedObserver(QString name, Handler handler)
    : m_name(std::move(name)), m_handler(std::move(handler))
{
    // A signal of another signature is not passed on.
    auto bus = QDBusConnection::sessionBus();
    if (!bus.connect(QString(), objectPath(), interfaceName(), signalName(), {m_name},
                     QStringLiteral("ssa{sv}"), this, SLOT(posted(QDBusMessage)))) {
        reportNoSessionBus(bus);
    }
}

DistributedObserver::~DistributedObserver() = default;

void DistributedObserver::posted(const QDBusMessage &message)
{
    const auto arguments = message.arguments();
    if (arguments.size() != 3) {
        return;
    }
    Notification notification;
    notification.name = arguments.at(0).toString();
    if (const auto object = arguments.at(1).toString(); !object.isEmpty()) {
        notification.object = object;
    }
    notification.userInfo = plainDictionary(arguments.at(2));
    // A copy, because the handler may destroy this object.
    const auto handler = m_handler;
    handler(notification);
}

} // namespace platform
