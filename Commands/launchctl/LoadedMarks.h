// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayList>
#include <QString>

// What was loaded and unloaded by hand under one service manager. Whether a unit that does not run
// is loaded cannot be seen from it.
class LoadedMarks {
public:
    // Waiting: to be started in the graphical session.
    enum class Mark { None, Loaded, Unloaded, Waiting };

    // In that folder, which must be there.
    LoadedMarks(const QByteArray &folder, quint64 managerIdentity);

    Mark of(const QByteArray &unit) const;
    void set(const QByteArray &unit, Mark mark) const;

    // The units that are marked.
    QByteArrayList units() const;

private:
    QString file(const QByteArray &unit) const;

    QString m_folder;
    QByteArray m_identity;
};
