// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FilePackage.h"
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Trees/FolderSize.h"
#include "Shared/Files/ZQFileManager.h"

#include <algorithm>

namespace {

// What desktops put into folders of their own accord.
bool isDesktopsOwn(const QString &name)
{
    return name == QStringLiteral(".DS_Store") || name == QStringLiteral("Icon\r");
}

} // namespace

bool ZQFileManager::fileExistsAtPath(const QString &path)
{
    return platform::fileExists(path);
}

bool ZQFileManager::isDirectoryAtPath(const QString &path)
{
    return platform::isFolder(path);
}

bool ZQFileManager::isPackageAtPath(const QString &path)
{
    return platform::isFilePackage(path);
}

bool ZQFileManager::isSymbolicLinkAtPath(const QString &path)
{
    return !platform::symbolicLinkDestination(path).isNull();
}

bool ZQFileManager::isFolderEmpty(const QString &path)
{
    const auto names = platform::namesInFolder(path);
    return std::all_of(names.begin(), names.end(), [&](const QString &name) {
        const auto entry = platform::appendingPathComponent(path, name);
        return isDesktopsOwn(name) || (platform::isFolderItself(entry) && isFolderEmpty(entry));
    });
}

quint64 ZQFileManager::fileSize(const QString &path)
{
    return platform::sizeOfItem(path);
}
