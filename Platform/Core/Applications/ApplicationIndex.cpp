// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/ApplicationIndex.h"

#include "Platform/Core/Applications/ApplicationBundle.h"
#include "Platform/Core/Applications/ApplicationFolders.h"
#include "Platform/Core/Text/FileName.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>

namespace platform {
namespace {

// Longer than a tick of the clock by which the kernel marks changes (at most 10 ms).
constexpr qint64 clockTick = 20'000'000;
// A time so far ahead is a wrong one.
constexpr qint64 maxClockError = 60'000'000'000;

qint64 nanoseconds(const timespec &time)
{
    return static_cast<qint64>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

} // namespace

qint64 ChangeMark::now()
{
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    return nanoseconds(time);
}

ChangeMark::ChangeMark(const QString &path, qint64 since)
    : m_path(fileNameBytes(path)), m_state(look(m_path)),
      m_isFresh(m_state.exists && m_state.changed > since - clockTick &&
                m_state.changed < since + maxClockError)
{
}

bool ChangeMark::hasChanged() const
{
    return m_isFresh || look(m_path) != m_state;
}

ChangeMark::State ChangeMark::look(const QByteArray &path)
{
    struct stat status {};
    if (::stat(path.constData(), &status) != 0) {
        return {};
    }
    return {true, status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_ctim)};
}

void ApplicationIndex::refresh()
{
    const auto isStale =
        m_marks.empty() || std::any_of(m_marks.begin(), m_marks.end(),
                                       [](const ChangeMark &mark) { return mark.hasChanged(); });
    if (isStale) {
        read();
    }
}

void ApplicationIndex::read()
{
    const auto since = ChangeMark::now();
    m_marks.clear();
    m_entries.clear();
    m_bundles.clear();
    const auto contents = contentsOfApplicationFolder(m_folder);
    for (const auto &folder : contents.folders) {
        m_marks.emplace_back(folder, since);
    }
    for (const auto &path : contents.desktopEntries) {
        const auto id = desktopFileId(m_folder, path);
        if (!m_entries.contains(id)) {
            m_entries.insert(id, path);
        }
    }
    for (const auto &path : contents.applicationBundles) {
        // Also where there is none yet: a folder that is being copied gets its information late.
        m_marks.emplace_back(path + QLatin1String("/Contents/Info.plist"), since);
        const auto identifier = ApplicationBundle::withPath(path).bundleIdentifier();
        if (!identifier.isNull() && !m_bundles.contains(identifier)) {
            m_bundles.insert(identifier, path);
        }
    }
}

} // namespace platform
