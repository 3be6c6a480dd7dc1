// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Notifications/Notification.h"

#include <QDBusMessage>
#include <QObject>

#include <functional>

// Notifications between the processes of one user, over the D-Bus session bus. The protocol is in
// Documentation/DistributedNotifications.md.
namespace platform {

// Posts to every process that observes the name. Any thread. Never fails visibly: without a session
// bus the notification is lost and one console line per process says so. User information that the
// bus cannot carry is left out.
void postDistributedNotification(const Notification &notification);

// Calls handler on the main thread for each notification of the name, from any sender, this process
// included, until the object is destroyed. User information holds plain values only: truth values,
// numbers, text, QByteArray, QStringList, QVariantList and QVariantMap. The object is text or, for
// none, invalid. Made and destroyed on the main thread; the handler may destroy it.
class DistributedObserver : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<void(const Notification &)>;

    DistributedObserver(QString name, Handler handler);
    ~DistributedObserver() override;

private Q_SLOTS:
    void posted(const QDBusMessage &message);

private:
    QString m_name;
    Handler m_handler;
};

} // namespace platform
