// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileChangeNotice.h"
#include "Platform/Core/Text/PathText.h"
#include "Shared/Files/ZQFileManagerDesktop.h"

int SendFinderSyncEvent(const platform::FileReference &item)
{
    if (const auto error = platform::checkFileReference(item); error != 0) {
        return error;
    }
    platform::sendFileChangeNotice(item.path);
    return 0;
}

void ZQFileManagerDesktop::notifyFileSystemChanged(const QString &path)
{
    if (const auto item = stringToFSRef(path)) {
        SendFinderSyncEvent(*item);
    }
}

std::optional<platform::FileReference> ZQFileManagerDesktop::stringToFSRef(const QString &path)
{
    return platform::makeFileReference(platform::absolutePath(path));
}

QString ZQFileManagerDesktop::stringWithFSRef(const platform::FileReference &reference)
{
    return platform::checkFileReference(reference) == 0 ? reference.path : QString();
}
