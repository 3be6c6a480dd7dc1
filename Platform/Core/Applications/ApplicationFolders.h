// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

#include <vector>

// Where applications are installed. Any thread.
namespace platform {

// The "applications" folders of XDG_DATA_HOME and XDG_DATA_DIRS, most important first, whether they
// exist or not. Flatpak and Snap put theirs into XDG_DATA_DIRS.
QStringList desktopEntryFolders();

// The folders of the user and of the machine for ".app" folders.
QStringList applicationBundleFolders();

// The desktop-file id of an entry: its path below the first of those folders with "-" for "/", else
// its file name.
QString desktopFileId(const QString &path);

// The same for one of the folders; null for an entry that is not below it.
QString desktopFileId(const QString &folder, const QString &path);

// What lies in a folder and, a few levels deep, in its subfolders, except in ".app" folders.
struct ApplicationFolderContents {
    QStringList desktopEntries;     // paths, those of each folder sorted, subfolders last
    QStringList applicationBundles; // paths of the ".app" folders, likewise
    QStringList folders;            // the folder itself and the subfolders, each with its path
};
ApplicationFolderContents contentsOfApplicationFolder(const QString &folder);

} // namespace platform
