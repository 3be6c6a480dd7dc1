// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Notification.h"

#include <QObject>

#include <functional>

// Notifications between the processes of one user, over the D-Bus session bus. The protocol is in
// Documentation/DistributedNotifications.md.
namespace platform {

// Posts to every process that observes the name. Any thread. Never fails visibly: without a session
// bus the notification is lost and one console line per process says so.
void postDistributedNotification(const Notification &notification);

// Calls handler on the main thread for each notification of the name, from any sender, this process
// included, until the object is destroyed.
class DistributedObserver : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<void(const Notification &)>;

    DistributedObserver(const QString &name, Handler handler);
    ~DistributedObserver() override;

private Q_SLOTS:
    void posted(const QString &name, const QString &object, const QVariantMap &userInfo);

private:
    QString m_name;
    Handler m_handler;
};

} // namespace platform
