// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Folders/Trash.h"
#include "Platform/Core/Text/PathText.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Shared/Files/ZQFileManager.h"
#include "Shared/Files/ZQFileManagerChange.h"
#include "Shared/Tasks/ZQTaskEx.h"

namespace {

const QString ditto = QStringLiteral("/usr/bin/ditto");

bool isUsable(const QString &path)
{
    return !path.isEmpty() && !path.contains(QChar(0));
}

} // namespace

bool ZQFileManagerArchives::compressFile(const QString &source, const QString &archive,
                                         IncludeParent includeParent, QByteArray *complaint)
{
    if (!isUsable(source) || !isUsable(archive)) {
        return false;
    }
    if (!platform::isMissing(archive)) {
        ZQFileManager::trashFile(archive);
    }
    QStringList arguments(QStringLiteral("-ck"));
    if (includeParent == IncludeParent::Yes) {
        arguments << QStringLiteral("--keepParent");
    }
    // Absolute paths are never taken for options.
    arguments << platform::absolutePath(source) << platform::absolutePath(archive);
    ZQTaskEx::runTask(ditto, arguments, nullptr, complaint);
    return ZQFileManager::fileExistsAtPath(archive);
}

bool ZQFileManagerArchives::compressFile(const QString &source, const QString &archive,
                                         IncludeParent includeParent)
{
    return compressFile(source, archive, includeParent, nullptr);
}

bool ZQFileManagerArchives::compressFile(const QString &source, const QString &archive)
{
    return compressFile(source, archive, IncludeParent::Yes);
}

bool ZQFileManagerArchives::decompressFile(const QString &archive, const QString &folder)
{
    if (!isUsable(archive) || !isUsable(folder)) {
        return false;
    }
    if (!platform::isMissing(folder) &&
        (filemanager::refusal(folder) ||
         platform::recycleItem(folder, ZQLocalPaths::trashDirectory()))) {
        return false;
    }
    ZQTaskEx::runTask(ditto, {QStringLiteral("-xk"), platform::absolutePath(archive),
                              platform::absolutePath(folder)});
    return ZQFileManager::fileExistsAtPath(folder);
}
