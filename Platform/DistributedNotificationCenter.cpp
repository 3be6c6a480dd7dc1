// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/DistributedNotificationCenter.h"

#include "Platform/Console.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <mutex>

namespace platform {
namespace {

const auto objectPath = QStringLiteral("/com/corvane/DistributedNotifications");
const auto interfaceName = QStringLiteral("com.corvane.DistributedNotifications");
const auto signalName = QStringLiteral("Posted");

} // namespace

void postDistributedNotification(const Notification &notification)
{
    auto message = QDBusMessage::createSignal(objectPath, interfaceName, signalName);
    message << notification.name << notification.object.toString() << notification.userInfo;
    if (!QDBusConnection::sessionBus().send(message)) {
        static std::once_flag once;
        std::call_once(once, [] { consoleLog(QStringLiteral("No session bus")); });
    }
}

DistributedObserver::DistributedObserver(const QString &name, Handler handler)
    : m_name(name), m_handler(std::move(handler))
{
    QDBusConnection::sessionBus().connect(QString(), objectPath, interfaceName, signalName,
                                          {m_name}, QStringLiteral("ssa{sv}"), this,
                                          SLOT(posted(QString, QString, QVariantMap)));
}

DistributedObserver::~DistributedObserver() = default;

void DistributedObserver::posted(const QString &name, const QString &object,
                                 const QVariantMap &userInfo)
{
    m_handler({name, object, userInfo});
}

} // namespace platform
