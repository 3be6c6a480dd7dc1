// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/Jobs/LaunchSession.h"

#include "Platform/Core/Basics/AccountEntry.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Text/FileName.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

QByteArray homeFolder()
{
    auto home = qgetenv("HOME");
    if (home.startsWith('/')) {
        return home;
    }
    const AccountEntry account(::getpwuid_r, ::getuid());
    return account.exists() ? QByteArray(account->pw_dir) : QByteArray();
}

// A folder of this user that nobody else can write to, links not followed.
bool isOwnFolder(const QByteArray &path, mode_t forbidden)
{
    struct stat status {};
    return ::lstat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && (status.st_mode & forbidden) == 0;
}

bool isOrBecomesPrivate(const QByteArray &path)
{
    ::mkdir(path.constData(), S_IRWXU);
    return isOwnFolder(path, S_IRWXG | S_IRWXO);
}

} // namespace

QByteArray ownLaunchAgentFolder()
{
    auto home = homeFolder();
    while (home.endsWith('/')) {
        home.chop(1);
    }
    return home.isEmpty() ? home : home + "/Library/LaunchAgents";
}

QByteArrayList launchAgentFolders()
{
    QByteArrayList folders{QByteArrayLiteral("/Library/LaunchAgents")};
    if (const auto own = ownLaunchAgentFolder(); !own.isEmpty()) {
        folders << own;
    }
    return folders;
}

QByteArrayList launchJobFiles()
{
    QByteArrayList files;
    for (const auto &folder : launchAgentFolders()) {
        for (const auto &entry : namesInFolder(fileNameFromBytes(folder))) {
            if (entry.endsWith(QStringLiteral(".plist"))) {
                files << folder + '/' + fileNameBytes(entry);
            }
        }
    }
    return files;
}

QByteArrayList displayVariablesIn(const QByteArrayList &environment)
{
    QByteArrayList found;
    for (const auto &variable : environment) {
        const auto name = variable.left(variable.indexOf('='));
        if (name == "DISPLAY" || name == "WAYLAND_DISPLAY" || name == "XAUTHORITY") {
            found << variable;
        }
    }
    return found;
}

QByteArray sessionRuntimeFolder()
{
    auto asked = qgetenv("XDG_RUNTIME_DIR");
    while (asked.size() > 1 && asked.endsWith('/')) {
        asked.chop(1);
    }
    const QByteArray usual = "/run/user/" + QByteArray::number(::geteuid());
    for (const auto &folder : {asked, usual}) {
        if (folder.startsWith('/') && isOwnFolder(folder, S_IWGRP | S_IWOTH)) {
            return folder;
        }
    }
    return {};
}

QByteArray jobControlFolder()
{
    const auto runtime = sessionRuntimeFolder();
    const QByteArray folder =
        runtime.isEmpty() ? "/tmp/ostrel-" + QByteArray::number(::geteuid()) : runtime + "/ostrel";
    return isOrBecomesPrivate(folder) ? folder : QByteArray();
}

} // namespace platform
