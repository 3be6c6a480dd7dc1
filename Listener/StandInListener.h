// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/DistributedNotificationCenter.h"

#include <QObject>
#include <QString>

// Answers the pane's notifications as the listener does, and serves no remote control.
class StandInListener : public QObject {
    Q_OBJECT
public:
    explicit StandInListener(QString statusWord);

private:
    static void say(const QString &word);

    QString m_statusWord;
    platform::DistributedObserver m_statusRequests;
    platform::DistributedObserver m_disconnects;
    platform::DistributedObserver m_relaunches;
};
