// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/PresetWatch.h"

#include "Ostrel/PresetFiles.h"
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Text/PathText.h"

#include <QElapsedTimer>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

constexpr auto minPause = 50ms; // a file that is replaced makes several events
constexpr int idleShare = 4;    // of the time that looking takes, however busy the folder is

} // namespace

PresetWatch::PresetWatch(QObject *parent) : QObject(parent)
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(minPause);
    const auto wait = [this] {
        if (!m_pause.isActive()) {
            m_pause.start();
        }
    };
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, wait);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, wait);
    connect(&m_pause, &QTimer::timeout, this, [this] {
        QElapsedTimer time;
        time.start();
        // Before anybody looks, so that what comes meanwhile is told.
        watch();
        Q_EMIT changed();
        m_pause.setInterval(
            std::max(minPause, std::chrono::milliseconds(time.elapsed()) * idleShare));
    });
    watch();
}

void PresetWatch::setShownFile(const QString &path)
{
    if (m_shownFile != path) {
        m_shownFile = path;
        watch();
    }
}

// All anew: a watch stays with a folder or file that was renamed, or ends with it.
void PresetWatch::watch()
{
    const QStringList old = m_watcher.files() + m_watcher.directories();
    if (!old.isEmpty()) {
        m_watcher.removePaths(old);
    }
    const QString usersFolder = presets::userFolder();
    QString folder = usersFolder;
    while (!platform::isFolder(folder) && folder.size() > 1) {
        folder = platform::deletingLastPathComponent(folder);
    }
    QStringList paths{folder};
    if (folder == usersFolder) {
        paths.append(platform::deletingLastPathComponent(folder)); // where it may be replaced
    }
    if (platform::fileExists(m_shownFile)) {
        paths.append(m_shownFile);
    }
    m_watcher.addPaths(paths);
}
