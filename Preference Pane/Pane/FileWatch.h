// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QFileSystemWatcher>
#include <QTimer>

// Tells when a file was written to, replaced or made. Once for changes that come in quick
// succession. Our own changes are told too.
class FileWatch : public QObject {
    Q_OBJECT
public:
    explicit FileWatch(QObject *parent = nullptr);

    // What happens from now on. May be called again: the folder need not have been there before.
    void follow(const QString &path);

Q_SIGNALS:
    void changed();

private:
    void look();

    QString m_path;
    QByteArray m_state; // when last looked at
    QFileSystemWatcher m_watcher;
    QTimer m_timer;
};
