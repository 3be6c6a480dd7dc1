// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// Following what others do to the user's presets.
#include "Ostrel/PresetFiles.h"
#include "Platform/Core/Text/PathText.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"

#include <QFile>
#include <QSignalBlocker>

#include <sys/stat.h>

#include <algorithm>

namespace {

using FileStamps = ZQKeyboardLayoutAppBrowser::FileStamps;

// The names that one has and the other has not, or with another stamp.
QSet<QString> differences(const FileStamps &one, const FileStamps &other)
{
    QSet<QString> names;
    for (auto file = one.begin(); file != one.end(); ++file) {
        if (other.value(file.key()) != file.value()) {
            names.insert(file.key());
        }
    }
    for (auto file = other.begin(); file != other.end(); ++file) {
        if (!one.contains(file.key())) {
            names.insert(file.key());
        }
    }
    return names;
}

} // namespace

ZQKeyboardLayoutAppBrowser::FileStamps ZQKeyboardLayoutAppBrowser::stampsOfUsersFiles()
{
    FileStamps stamps;
    const QString folder = presets::userFolder() + QLatin1Char('/');
    for (const QString &name : presets::fileNames(folder)) {
        struct stat status {};
        if (stat(QFile::encodeName(folder + name).constData(), &status) == 0) {
            stamps[name] = {static_cast<qint64>(status.st_ino),
                            status.st_size,
                            status.st_mtim.tv_sec,
                            status.st_mtim.tv_nsec,
                            status.st_ctim.tv_sec,
                            status.st_ctim.tv_nsec};
        }
    }
    return stamps;
}

bool ZQKeyboardLayoutAppBrowser::isListed(const QString &title, const QStringList &bundleIDs) const
{
    return std::any_of(m_dataArray.begin(), m_dataArray.end(), [&](const Row &row) {
        return row.title == title && row.bundleIDs == bundleIDs;
    });
}

void ZQKeyboardLayoutAppBrowser::followFiles()
{
    const FileStamps stamps = stampsOfUsersFiles();
    const QSet<QString> changed = differences(m_stamps, stamps);
    m_stamps = stamps;
    if (changed.isEmpty()) {
        return;
    }
    const QString shown = platform::lastPathComponent(m_editController->currentFile());
    const QString title = presets::titleOf(shown);
    const bool showsIt = changed.contains(shown) && stamps.contains(shown);
    const auto preset = showsIt ? presets::read(presets::userFile(title)) : std::nullopt;
    // An edit of our own leaves the list as it is, also where it has made the user's file.
    const bool isEdit = changed.size() == 1 && preset && m_usersTitles.contains(title) &&
                        isListed(title, presets::identifiers(*preset));
    if (!isEdit) {
        followList();
        m_stamps = stamps; // what came since is not seen yet
    }
    if (selectedTitle() != title || !changed.contains(shown) || m_editController->isUnsaved()) {
        return;
    }
    if (!preset || !m_editController->isShowing(*preset)) {
        m_editController->loadKeysForFile(pathForPreset(title));
    }
}

void ZQKeyboardLayoutAppBrowser::followList()
{
    const int selected = m_tableView->selectedRow();
    const Row before = selected < 0 ? Row() : m_dataArray[selected];
    {
        const QSignalBlocker blocked(m_tableView);
        populateApplications();
        m_tableView->clearSelection();
        const auto isBefore = [&before](const Row &row) {
            return row.title == before.title && row.isUsers == before.isUsers;
        };
        auto row = std::find_if(m_dataArray.begin(), m_dataArray.end(), isBefore);
        if (row == m_dataArray.end()) {
            row = std::find_if(m_dataArray.begin(), m_dataArray.end(),
                               [&before](const Row &other) { return other.title == before.title; });
        }
        if (selected >= 0 && row != m_dataArray.end()) {
            m_tableView->selectOnlyRow(static_cast<int>(row - m_dataArray.begin()));
        }
    }
    Q_EMIT listChanged();
}
