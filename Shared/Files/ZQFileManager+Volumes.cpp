// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Text/PathText.h"
#include "Shared/Files/ZQFileManager.h"

namespace {

// "/Volumes/NAME" of a path on a volume of that name; null where the path has too few components.
QString mountPoint(const QString &path)
{
    const auto components = platform::pathComponents(path);
    return components.size() < 3 ? QString() : u'/' + components.at(1) + u'/' + components.at(2);
}

} // namespace

bool ZQFileManager::isVolumeMountedForPath(const QString &path)
{
    const auto volume = path.startsWith(QStringLiteral("/Volumes")) ? mountPoint(path) : QString();
    return volume.isNull() || fileExistsAtPath(volume);
}

bool ZQFileManager::isDriveMountedForPath(const QString &path)
{
    const auto volume = path.startsWith(QStringLiteral("/Volumes/")) ? mountPoint(path) : QString();
    if (volume.isNull()) {
        return true;
    }
    platform::consoleLog(QStringLiteral("mountpoint: %@"), volume);
    return fileExistsAtPath(volume);
}
