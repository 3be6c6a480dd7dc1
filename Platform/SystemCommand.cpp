// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/SystemCommand.h"

#include "Platform/FileName.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <memory>

namespace platform {
namespace {

struct Free {
    void operator()(char *text) const { std::free(text); } // NOLINT(*-no-malloc,*-owning-memory)
};

// Without links in it; empty where there is no such file.
QByteArray realPath(const QByteArray &path)
{
    const std::unique_ptr<char, Free> real(::realpath(path.constData(), nullptr));
    return real != nullptr ? QByteArray(real.get()) : QByteArray();
}

bool isExecutableFile(const QByteArray &path)
{
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(path.constData(), X_OK) == 0;
}

// Only root's own word on the file's folders, links resolved: a link is as safe as where it lies.
bool onlyRootChanges(const QByteArray &real)
{
    for (auto path = real; !path.isEmpty(); path.truncate(path.lastIndexOf('/'))) {
        struct stat status {};
        if (::lstat(path.constData(), &status) != 0 || status.st_uid != 0 ||
            (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
            return false;
        }
    }
    return true;
}

// The folders that hold the system's commands.
const std::array<QByteArray, 4> &commandFolders()
{
    static const std::array folders{QByteArrayLiteral("/usr/bin"), QByteArrayLiteral("/usr/sbin"),
                                    QByteArrayLiteral("/bin"), QByteArrayLiteral("/sbin")};
    return folders;
}

bool mayBeRun(const QByteArray &path)
{
    return isExecutableFile(path) && (::geteuid() != 0 || onlyRootChanges(realPath(path)));
}

QByteArray findPrivateFolder()
{
    Dl_info code{};
    if (::dladdr(reinterpret_cast<const void *>(&findPrivateFolder), &code) == 0) { // NOLINT
        return {};
    }
    for (auto folder = realPath(code.dli_fname); folder.contains('/');) {
        folder.truncate(folder.lastIndexOf('/'));
        QByteArray candidate = folder + "/libexec/ostrel";
        struct stat status {};
        if (::stat(candidate.constData(), &status) == 0 && S_ISDIR(status.st_mode)) {
            return candidate;
        }
    }
    // A copy of the bundle, say in somebody's home, has no commands beside it.
    return QByteArrayLiteral(OSTREL_COMMAND_FOLDER);
}

} // namespace

bool isChangedOnlyByRoot(const QString &path)
{
    const auto real = realPath(fileNameBytes(path));
    return !real.isEmpty() && onlyRootChanges(real);
}

QString privateCommandFolder()
{
    static const auto *folder = new QString(fileNameFromBytes(findPrivateFolder()));
    return *folder;
}

QString systemCommand(const QString &path)
{
    const auto asked = fileNameBytes(path);
    const auto slash = asked.lastIndexOf('/');
    const auto name = asked.mid(slash + 1);
    const auto isCommand = std::any_of(
        commandFolders().begin(), commandFolders().end(),
        [&](const QByteArray &folder) { return folder == asked.left(slash < 0 ? 0 : slash); });
    if (!isCommand || name.isEmpty() || mayBeRun(asked)) {
        return path;
    }
    const auto ours = fileNameBytes(privateCommandFolder()) + '/' + name;
    if (mayBeRun(ours)) {
        return fileNameFromBytes(ours);
    }
    for (const auto &folder : commandFolders()) {
        const QByteArray candidate = folder + '/' + name;
        if (mayBeRun(candidate)) {
            return fileNameFromBytes(candidate);
        }
    }
    return path;
}

} // namespace platform
