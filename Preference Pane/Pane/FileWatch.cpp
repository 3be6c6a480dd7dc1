// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Pane/FileWatch.h"

#include "Platform/Core/Text/FileName.h"

#include <QFileInfo>

#include <sys/stat.h>

namespace {

// Unseen by people, and somebody who writes without end does not keep us busy.
constexpr int pauseMilliseconds = 50;

// Another one for each writing; empty where there is no file.
QByteArray stateOf(const QString &path)
{
    struct stat status {};
    return ::stat(platform::fileNameBytes(path).constData(), &status) == 0
               ? QByteArray::number(qulonglong(status.st_ino)) + ' ' +
                     QByteArray::number(qlonglong(status.st_size)) + ' ' +
                     QByteArray::number(qlonglong(status.st_mtim.tv_sec)) + ' ' +
                     QByteArray::number(qlonglong(status.st_mtim.tv_nsec))
               : QByteArray();
}

} // namespace

FileWatch::FileWatch(QObject *parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(pauseMilliseconds);
    const auto soon = [this] {
        if (!m_timer.isActive()) {
            m_timer.start();
        }
    };
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, soon);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, soon);
    connect(&m_timer, &QTimer::timeout, this, &FileWatch::look);
}

void FileWatch::follow(const QString &path)
{
    const auto folder = QFileInfo(path).path();
    if (!m_watcher.directories().contains(folder) && QFileInfo(folder).isDir()) {
        m_watcher.addPath(folder);
    }
    // A file that was replaced is not watched any more.
    if (!m_watcher.files().contains(path) && QFileInfo::exists(path)) {
        m_watcher.addPath(path);
    }
    if (m_path != path) {
        m_path = path;
        m_state = stateOf(path);
    }
}

void FileWatch::look()
{
    follow(m_path);
    const auto state = stateOf(m_path);
    if (state != m_state) { // not another file of the folder
        m_state = state;
        Q_EMIT changed();
    }
}
