// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PrivateFiles.h"

#include "Platform/StandardFolders.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace platform {
namespace {

constexpr mode_t ownerOnly = 0700;

// Through a descriptor: the home's owner could put a link in the new folder's place meanwhile.
void giveToOwnerOf(const QByteArray &parent, const QByteArray &folder)
{
    struct stat status {};
    const int descriptor =
        ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) {
        return;
    }
    if (::stat(parent.constData(), &status) == 0 && status.st_uid != 0) {
        // Where this fails the folder stays root's.
        [[maybe_unused]] const auto result = ::fchown(descriptor, status.st_uid, status.st_gid);
    }
    ::close(descriptor);
}

} // namespace

bool createPrivateFolder(const QString &path)
{
    QByteArray folder;
    for (const auto &name : QFile::encodeName(path).split('/')) {
        if (name.isEmpty()) {
            continue;
        }
        const auto parent = std::exchange(folder, folder + '/' + name);
        if (::mkdir(folder.constData(), ownerOnly) == 0 && isRunningAsRoot()) {
            giveToOwnerOf(parent + '/', folder);
        }
    }
    struct stat status {};
    return ::stat(folder.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool createEmptyPrivateFile(const QString &path, QString *error)
{
    const auto name = QFile::encodeName(path);
    auto temporary = name + ".XXXXXX";
    const int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC); // readable for the owner only
    const bool created =
        descriptor >= 0 && std::rename(temporary.constData(), name.constData()) == 0;
    if (!created) {
        *error = QString::fromStdString(std::generic_category().message(errno));
    }
    if (descriptor >= 0) {
        ::close(descriptor);
        if (!created) {
            ::unlink(temporary.constData());
        }
    }
    return created;
}

bool renameWithoutReplacing(const QString &from, const QString &to)
{
    const auto source = QFile::encodeName(from);
    const auto target = QFile::encodeName(to);
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) ==
        0) {
        return true;
    }
    // Network file systems do not know how.
    const bool isUnknown = errno == EINVAL || errno == ENOSYS;
    return isUnknown && !nameExists(to) && std::rename(source.constData(), target.constData()) == 0;
}

bool nameExists(const QString &path)
{
    struct stat status {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0;
}

} // namespace platform
