// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/DistributedNotificationCenter.h"

#include "Platform/Console.h"
#include "Platform/DBusValue.h"

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
        consoleLog(QStringLiteral("Distributed notifications are lost: no session bus (%@)"),
                   bus.lastError().message());
    });
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
    if (!bus.send(message)) {
        reportNoSessionBus(bus);
    }
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
