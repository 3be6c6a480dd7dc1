// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Trees/MoveItem.h"
#include "Shared/Files/ZQFileManager.h"
#include "Shared/Files/ZQFileManagerChange.h"
#include "Shared/Log/ZQLog.h"

#include <thread>

using platform::moveItem;

namespace {

bool isChangeOfCaseOnly(const QString &source, const QString &destination)
{
    return source.toLower() == destination.toLower();
}

// Where case does not count, the new name is the old one's: it has to go through a third.
bool moveThroughAnotherName(const QString &source, const QString &destination)
{
    const auto between = ZQFileManager::uniqueFilename(destination);
    if (moveItem(source, between)) {
        return false;
    }
    // Where case counts, the new name may have been free at once.
    if (between == destination || !moveItem(between, destination)) {
        return true;
    }
    moveItem(between, source); // NOLINT(readability-suspicious-call-argument): back again
    return false;
}

platform::FileError moveUnlessProtected(const QString &source, const QString &destination)
{
    if (auto error = filemanager::refusal(source)) {
        return error;
    }
    if (isChangeOfCaseOnly(source, destination) && moveThroughAnotherName(source, destination)) {
        return {};
    }
    return moveItem(source, destination);
}

} // namespace

bool ZQFileManager::moveFile(const QString &source, const QString &destination,
                             ShouldAuth shouldAuth)
{
    if (platform::itemExists(destination)) {
        unlockFile(destination);
    }
    if (!destination.isEmpty()) {
        unlockFolder(
            platform::appendingPathComponent(destination, platform::lastPathComponent(source)));
    }
    const auto error = moveUnlessProtected(source, destination);
    if (!error) {
        return true;
    }
    ZQLog::appendLog(QStringLiteral("Error moving file: %@."), error.localizedDescription());
    if (shouldAuth == ShouldAuth::Yes) {
        ZQLog::appendLog(QStringLiteral("Authorizing..."));
    }
    return filemanager::authorised(shouldAuth, &ZQAuthorization::authMoveFile, source, destination);
}

bool ZQFileManager::moveFile(const QString &source, const QString &destination)
{
    return moveFile(source, destination, ShouldAuth::Yes);
}

bool ZQFileManager::moveFile(const QString &source, const QString &destination,
                             std::chrono::seconds timeout)
{
    if (!moveFile(source, destination)) {
        return false;
    }
    if (isChangeOfCaseOnly(source, destination)) {
        // Both names may lead to the item, so that there is nothing to wait for.
        std::this_thread::sleep_for(std::chrono::microseconds(500));
        return true;
    }
    return filemanager::waitUntil([&] { return platform::isMissing(source); }, timeout);
}
