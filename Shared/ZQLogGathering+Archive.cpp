// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// The archive on the desktop.
#include "Platform/Descriptor.h"
#include "Platform/FileName.h"
#include "Platform/FileStatus.h"
#include "Platform/PathText.h"
#include "Platform/PrivateFiles.h"
#include "Platform/RemoveItem.h"
#include "Platform/TextFormat.h"
#include "Shared/ZQFileManager.h"
#include "Shared/ZQLogGathering.h"

#include <QDateTime>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

// What only the user could read stays so. It belongs to whoever has gathered it: what root has read
// is not given to the desktop's owner.
void makePrivate(const QString &archive)
{
    const platform::Descriptor file(platform::retried([&] {
        return ::open(platform::fileNameBytes(archive).constData(),
                      O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); // NOLINT(*-vararg)
    }));
    struct stat status {};
    // With a second name it would be something else that was put there meanwhile.
    if (file.isOpen() && ::fstat(file.number(), &status) == 0 && status.st_uid == ::geteuid() &&
        status.st_nlink == 1) {
        // Where this fails, the archive is no less whole.
        [[maybe_unused]] const auto result = ::fchmod(file.number(), S_IRUSR | S_IWUSR);
    }
}

} // namespace

ZQLogGathering::Outcome ZQLogGathering::compress() const
{
    const auto desktop = ZQLocalPaths::desktopDirectory();
    if (!platform::isFolder(desktop)) {
        platform::createPrivateFolder(desktop); // a new user, or one who has never needed it
    }
    const auto archive = archivePath(desktop, m_names.first());
    const auto isDone = ZQFileManager::compressFile(m_folder, archive);
    platform::removeItem(m_folder);
    if (!isDone) {
        return Outcome::NotCompressed;
    }
    makePrivate(archive);
    return Outcome::Compressed;
}
