// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Notifications/DistributedNotificationCenter.h"

#include <QObject>
#include <QString>

// Answers the pane's notifications as the listener does, and serves no remote control.
class StandInListener : public QObject {
    Q_OBJECT
public:
    explicit StandInListener(QString statusWord);

private:
    void say(const QString &word) const;

    QString m_statusWord;
    bool m_isDisconnected = false; // nothing more is said until it is started anew
    platform::DistributedObserver m_statusRequests;
    platform::DistributedObserver m_disconnects;
    platform::DistributedObserver m_relaunches;
};
