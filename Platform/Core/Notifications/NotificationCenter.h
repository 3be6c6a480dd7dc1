// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Notifications/Notification.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>

namespace platform {

// Posted in-process before the application ends, while the main thread still runs.
inline const QString applicationWillTerminateNotification =
    QStringLiteral("NSApplicationWillTerminateNotification");

// Notifications inside this process, delivered at once on the poster's thread, in the order in
// which the observers were added. Any thread. An observer that is added during a post hears the
// next one.
class NotificationCenter {
public:
    using Handler = std::function<void(const Notification &)>;
    using Observer = quint64;

    static NotificationCenter &defaultCenter();

    Observer addObserver(const QString &name, Handler handler);

    // No call begins after this has returned; one that runs on another thread may still end later.
    void removeObserver(Observer observer);

    void post(const Notification &notification);

private:
    struct Entry {
        QString name;
        std::shared_ptr<const Handler> handler;
    };

    std::mutex m_mutex;
    std::map<Observer, Entry> m_entries;
    Observer m_last = 0;
};

} // namespace platform
