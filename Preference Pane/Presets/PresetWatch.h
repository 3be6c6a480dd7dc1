// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QFileSystemWatcher>
#include <QTimer>

// Tells when something in the user's folder of presets may have changed, be it by ourselves, and
// where the folder is made later, too. Main thread only.
class PresetWatch : public QObject {
    Q_OBJECT
public:
    explicit PresetWatch(QObject *parent = nullptr);

    // The file that shows: of the others only what is put in their place counts, not what is
    // written into them.
    void setShownFile(const QString &path);

Q_SIGNALS:
    void changed();

private:
    void watch();

    QFileSystemWatcher m_watcher;
    QTimer m_pause;
    QString m_shownFile;
};
