// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Notifications/NotificationCenter.h"

#include <QCoreApplication>

#include <vector>

namespace platform {
namespace {

void announceTermination()
{
    const auto post = [] {
        NotificationCenter::defaultCenter().post({applicationWillTerminateNotification, {}, {}});
    };
    auto *application = QCoreApplication::instance();
    QObject::connect(application, &QCoreApplication::aboutToQuit, application, post,
                     Qt::DirectConnection);
}

} // namespace

NotificationCenter &NotificationCenter::defaultCenter()
{
    // Never destroyed: objects with static lifetime may still remove their observers.
    static auto *center = [] {
        qAddPreRoutine(announceTermination); // now, or once there is an application
        return new NotificationCenter;
    }();
    return *center;
}

NotificationCenter::Observer NotificationCenter::addObserver(const QString &name, Handler handler)
{
    const std::lock_guard lock(m_mutex);
    m_entries.emplace(++m_last, Entry{name, std::make_shared<const Handler>(std::move(handler))});
    return m_last;
}

void NotificationCenter::removeObserver(Observer observer)
{
    const std::lock_guard lock(m_mutex);
    m_entries.erase(observer);
}

void NotificationCenter::post(const Notification &notification)
{
    std::vector<Observer> observers;
    {
        const std::lock_guard lock(m_mutex);
        for (const auto &[observer, entry] : m_entries) {
            if (entry.name == notification.name) {
                observers.push_back(observer);
            }
        }
    }
    for (const auto observer : observers) {
        std::shared_ptr<const Handler> handler;
        {
            // One handler may have removed the next.
            const std::lock_guard lock(m_mutex);
            const auto entry = m_entries.find(observer);
            if (entry == m_entries.end()) {
                continue;
            }
            handler = entry->second.handler;
        }
        (*handler)(notification);
    }
}

} // namespace platform
