// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Bus/BusConnection.h"

#include <QByteArrayList>
#include <QHash>
#include <QString>

#include <memory>
#include <optional>

// What the manager says of a unit.
struct UnitState {
    QByteArray loadState;
    QByteArray activeState;
    QByteArray subState;
    QByteArray fragmentPath; // the unit file
    QByteArray sourcePath;   // the job file that it was made from
    QByteArray result;       // of the last run
    quint32 mainPid = 0;
    qint32 exitCode = 0; // as in siginfo_t
    qint32 exitStatus = 0;
    quint64 startedAt = 0; // microseconds of the monotonic clock; 0: never
    quint32 restarts = 0;

    // Starting and ending included.
    bool isActive() const { return activeState != "inactive" && activeState != "failed"; }
};

// The systemd user manager of the session, over its private socket. The bus may be another
// session's, and a manager without a bus is a manager too.
class UserManager {
public:
    // Nothing where there is no manager; then error stays null. Nothing and an error where there is
    // one that cannot be spoken to. What is done here ends with the deadline.
    static std::unique_ptr<UserManager> connect(platform::BusConnection::Deadline deadline,
                                                QString *error);

    ~UserManager() = default;
    UserManager(const UserManager &) = delete;
    UserManager &operator=(const UserManager &) = delete;

    std::optional<UnitState> unit(const QByteArray &name, QString *error);

    // The units in memory whose names match the pattern.
    std::optional<QByteArrayList> unitNames(const QByteArray &pattern, QString *error);

    // Runs the generators and reads the unit files anew.
    QString reload();

    // The variables, "NAME=value", that its programs are started with.
    QByteArrayList environment();
    void addToEnvironment(const QByteArray &variable);

    // Start and stop until it is done; answer with what went wrong, null for nothing.
    QString start(const QByteArray &unit) { return runJob("StartUnit", unit); }
    QString stop(const QByteArray &unit) { return runJob("StopUnit", unit); }

    // Forgets that the unit has failed.
    void resetFailed(const QByteArray &unit);

    // A number that no other manager of this machine's run has.
    quint64 identity();

    // Why the unit file could not be taken.
    QString loadError(const QByteArray &unit);

private:
    explicit UserManager(platform::BusConnection::Deadline deadline) : m_deadline(deadline) {}

    static int jobRemoved(sd_bus_message *message, void *manager, sd_bus_error *);

    // The answer to a call of the manager; none, with the reason in error, for a failure.
    template <typename... Arguments>
    platform::BusMessage call(const char *method, QString *error, const char *types,
                              Arguments... arguments);
    QString runJob(const char *method, const QByteArray &unit);
    std::optional<QByteArray> objectPath(const QByteArray &unit, QString *error);

    // The bus, for a call that must end with the deadline.
    sd_bus *limitedBus() const;

    platform::BusConnection::Deadline m_deadline;
    platform::BusConnection m_bus;
    QHash<QByteArray, QByteArray> m_results; // of finished jobs, by path
};
