// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// The archive on the desktop.
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Folders/PrivateFiles.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Platform/Core/Trees/RemoveItem.h"
#include "Shared/Files/ZQFileManager.h"
#include "Shared/Support/ZQLogGathering.h"

#include <QDateTime>

namespace {

QString archivePath(const QString &desktop, const QString &appName)
{
    auto path = desktop + platform::format(QStringLiteral("/%@ Logs.zip"), appName);
    if (!platform::fileExists(path)) {
        return path;
    }
    const auto time = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddHHmmss"));
    return path.chopped(4) + platform::format(QStringLiteral("_%@.zip"), time);
}

// The command's first line, less its name.
QString reasonIn(const QByteArray &complaint)
{
    const auto line = QString::fromUtf8(complaint.left(complaint.indexOf('\n'))).trimmed();
    const auto name = QStringLiteral("ditto: ");
    return line.isEmpty() ? QString() : line.startsWith(name) ? line.mid(name.size()) : line;
}

} // namespace

ZQLogGathering::Outcome ZQLogGathering::compress()
{
    const auto desktop = ZQLocalPaths::desktopDirectory();
    if (!platform::isFolder(desktop)) {
        platform::createPrivateFolder(desktop); // a new user, or one who has never needed it
    }
    const auto archive = archivePath(desktop, m_names.first());
    // Private from its first byte, as the folder is. It belongs to whoever has gathered it: what
    // root has read is not given to the desktop's owner.
    QByteArray complaint;
    const auto isDone =
        ZQFileManager::compressFile(m_folder, archive, IncludeParent::Yes, &complaint);
    platform::removeItem(m_folder);
    if (isDone) {
        m_archive = archive;
        return Outcome::Compressed;
    }
    m_failure = reasonIn(complaint);
    return Outcome::NotCompressed;
}
