// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Folders/StandardFolders.h"
#include "Platform/Core/Folders/Trash.h"
#include "Platform/Core/Text/PathText.h"
#include "Shared/Authorization/ZQAuthorization.h"
#include "Shared/Basics/ZQLocalPaths.h"

#include <QDateTime>

QString ZQAuthorization::trashDestination(const QString &path) const
{
    const auto folder = platform::isRunningAsRoot() && !m_userDirectory.isNull()
                            ? m_userDirectory + QStringLiteral("/.Trash")
                            : ZQLocalPaths::trashDirectory();
    if (folder.isNull()) {
        return {};
    }
    const auto name = platform::lastPathComponent(path);
    const auto destination = platform::appendingPathComponent(folder, name);
    if (platform::isMissing(destination)) { // a link that leads nowhere would be lost, too
        return destination;
    }
    const auto now = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddHHmmss"));
    // Kept on purpose for the maker's other programs: the dot stands there without an extension,
    // too.
    return platform::deletingPathExtension(destination) + u'_' + now + u'.' +
           platform::pathExtension(name);
}

bool ZQAuthorization::authTrashFile(const QString &path, DeleteOnRootAccount deleteOnRootAccount)
{
    if (isSystemDirectory(
            path, QStringLiteral("Unable to trash path %@ because it is a system directory."))) {
        return false;
    }
    const auto destination = trashDestination(path);
    if (platform::isRunningAsRoot() && m_userDirectory.isNull() &&
        deleteOnRootAccount == DeleteOnRootAccount::Yes) {
        return authRemoveFile(
            destination); // not the file itself: kept on purpose for the maker's other programs
    }
    if (destination.isNull() || platform::isMissing(path)) {
        return authMoveFile(path, destination);
    }
    platform::makeTrash(destination.left(destination.lastIndexOf(u'/')));
    platform::TrashRecord record(path, destination);
    const bool isDone = authMoveFile(path, destination);
    if (!isDone) {
        record.remove();
    }
    return isDone;
}

bool ZQAuthorization::authTrashFolderContents(const QString &folder,
                                              DeleteOnRootAccount deleteOnRootAccount)
{
    if (isSystemDirectory(
            folder,
            QStringLiteral(
                "Unable to trash folder contents of path %@ because it is a system directory."))) {
        return false;
    }
    bool allDone = true;
    const bool isDeleting = deleteOnRootAccount == DeleteOnRootAccount::Yes &&
                            m_userDirectory.isNull() && platform::isRunningAsRoot();
    for (const auto &name : platform::namesInFolder(folder)) {
        const auto path = platform::appendingPathComponent(folder, name);
        const bool isDone = isDeleting ? authExecTask(QStringLiteral("/bin/rm"),
                                                      {QStringLiteral("-R"), QStringLiteral("-f"),
                                                       pathArgument(path)}) == 0
                                       : authTrashFile(path);
        allDone = isDone && allDone;
    }
    return allDone;
}

bool ZQAuthorization::authMoveFolderContents(const QString &folder, const QString &destination)
{
    if (isSystemDirectory(
            folder, QStringLiteral(
                        "Unable to move contents of path %@ because it is a system directory."))) {
        return false;
    }
    bool allDone = true;
    for (const auto &name : platform::namesInFolder(folder)) {
        const auto target = destination.isNull()
                                ? QString() // which is refused, with a message
                                : platform::appendingPathComponent(destination, name);
        allDone = authMoveFile(platform::appendingPathComponent(folder, name), target) && allDone;
    }
    return allDone;
}
