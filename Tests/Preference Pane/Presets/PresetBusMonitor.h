// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Notifications/DistributedNotificationCenter.h"

#include <QDBusConnection>
#include <QProcess>
#include <QTest>

// What "gdbus monitor" tells of this program's notifications.
class PresetBusMonitor {
public:
    PresetBusMonitor()
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral("gdbus"),
                        {QStringLiteral("monitor"), QStringLiteral("--session"),
                         QStringLiteral("--dest"), QDBusConnection::sessionBus().baseService()});
        // It says that it monitors before it does.
        while (m_process.state() != QProcess::NotRunning && !m_text.contains("'probe'")) {
            platform::postDistributedNotification({QStringLiteral("probe"), {}, {}});
            constexpr int pause = 20; // milliseconds
            m_process.waitForReadyRead(pause);
            m_text += m_process.readAll();
        }
    }
    ~PresetBusMonitor()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    PresetBusMonitor(const PresetBusMonitor &) = delete;
    PresetBusMonitor &operator=(const PresetBusMonitor &) = delete;

    // How often word of a changed preset came so far, without an object and user information.
    int notices()
    {
        QTest::qWait(1);
        m_text += m_process.readAll();
        return static_cast<int>(
            m_text.count("Posted ('ZQOstrelKeyboardLayoutModified', '', @a{sv} {})"));
    }

private:
    QProcess m_process;
    QByteArray m_text;
};
