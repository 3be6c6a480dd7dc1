// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/ApplicationFolders.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Folders/StandardFolders.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Text/PathText.h"

#include <QFileInfo>
#include <QStandardPaths>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

namespace platform {
namespace {

constexpr int maxDepth = 5;
constexpr int maxEntries = 100000; // no machine has as many; a folder full of links might

bool isFolder(const QByteArray &path, unsigned char type)
{
    if (type != DT_UNKNOWN && type != DT_LNK) {
        return type == DT_DIR;
    }
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

void collect(const QByteArray &folder, int depth, ApplicationFolderContents &contents)
{
    contents.folders << fileNameFromBytes(folder);
    const Descriptor opened(
        retried([&] { return ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!opened.isOpen()) {
        return;
    }
    QByteArrayList subfolders;
    QStringList entries;
    QStringList bundles;
    FolderEntries all(opened.fd());
    while (all.next()) {
        const QByteArray name(all.name());
        const auto path = folder + '/' + name;
        const auto isApp = name.size() > 4 && name.right(4).toLower() == ".app";
        const auto isEntry = name.size() > 8 && name.endsWith(".desktop");
        // A link to an entry is not followed here, since package systems install many.
        const auto isLinkedEntry = isEntry && all.type() == DT_LNK;
        if (!isLinkedEntry && isFolder(path, all.type())) {
            if (isApp) {
                bundles << fileNameFromBytes(path);
            } else if (!name.startsWith('.')) {
                subfolders << path;
            }
        } else if (isEntry) {
            entries << fileNameFromBytes(path);
        }
    }
    std::sort(entries.begin(), entries.end());
    std::sort(bundles.begin(), bundles.end());
    std::sort(subfolders.begin(), subfolders.end());
    contents.desktopEntries << entries;
    contents.applicationBundles << bundles;
    for (const auto &subfolder : subfolders) {
        if (depth < maxDepth && contents.desktopEntries.size() < maxEntries &&
            contents.folders.size() < maxEntries / 100) {
            collect(subfolder, depth + 1, contents);
        }
    }
}

} // namespace

QStringList desktopEntryFolders()
{
    auto folders = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    for (auto &folder : folders) {
        folder += QLatin1String("/applications");
    }
    return folders;
}

QStringList applicationBundleFolders()
{
    return searchPathForDirectories(SearchPathDirectory::Application, UserDomain | LocalDomain);
}

QString desktopFileId(const QString &folder, const QString &path)
{
    return path.startsWith(folder + QLatin1Char('/'))
               ? path.mid(folder.size() + 1).replace(QLatin1Char('/'), QLatin1Char('-'))
               : QString();
}

QString desktopFileId(const QString &path)
{
    const auto all = desktopEntryFolders();
    // As it is written, else where links lead.
    for (const auto &candidate : all) {
        auto id = desktopFileId(candidate, path);
        if (!id.isNull()) {
            return id;
        }
    }
    const auto name = lastPathComponent(path);
    const auto real = QFileInfo(deletingLastPathComponent(path)).canonicalFilePath();
    for (const auto &candidate : all) {
        const auto realCandidate = QFileInfo(candidate).canonicalFilePath();
        auto id = realCandidate.isEmpty()
                      ? QString()
                      : desktopFileId(realCandidate, real + QLatin1Char('/') + name);
        if (!id.isNull()) {
            return id;
        }
    }
    return name;
}

ApplicationFolderContents contentsOfApplicationFolder(const QString &folder)
{
    ApplicationFolderContents contents;
    const auto bytes = fileNameBytes(folder);
    if (!bytes.isEmpty() && !bytes.contains('\0')) {
        collect(bytes, 0, contents);
    }
    return contents;
}

} // namespace platform
