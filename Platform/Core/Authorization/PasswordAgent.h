// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Bus/BusConnection.h"

#include <QByteArray>
#include <QString>

#include <poll.h>

namespace platform {

// A polkit authentication agent for this process alone, which shows nothing: it answers with one
// account's name and password. It has a connection of its own to the system bus, whose events are
// taken on the thread that made it.
class PasswordAgent {
public:
    PasswordAgent(const QString &user, const QString &password);
    ~PasswordAgent();
    PasswordAgent(const PasswordAgent &) = delete;
    PasswordAgent &operator=(const PasswordAgent &) = delete;

    // From now on polkit asks this agent when this process wants something. False, with the reason
    // in error, when polkit cannot be reached or refuses.
    bool start(QString *error);

    // What to wait for, and what to call then. False when the connection is lost.
    pollfd events() const;
    bool takeEvents();

private:
    int answer(sd_bus_message *message) const;
    bool mayAnswer(sd_bus_message *message, QByteArray *cookie) const;
    bool isAmongIdentities(sd_bus_message *message) const;
    bool authenticate(const QByteArray &cookie) const;

    QByteArray m_user;
    QByteArray m_password;  // the only copy but the caller's; wiped at the end
    QByteArray m_authority; // the bus name of polkit, which alone may ask
    BusConnection m_bus;
};

} // namespace platform
