// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/RunningExecutable.h"

#include <sys/stat.h>
#include <unistd.h>

#include <climits>

namespace platform {
namespace {

// The file that a process runs still has this name.
bool isNameOfRunningFile(const char *link, const char *name)
{
    struct stat running {};
    struct stat named {};
    return ::stat(link, &running) == 0 && ::stat(name, &named) == 0 &&
           running.st_dev == named.st_dev && running.st_ino == named.st_ino;
}

} // namespace

QByteArray runningExecutable(const QByteArray &link)
{
    const QByteArray deleted(" (deleted)"); // the kernel's mark for a file that is gone
    QByteArray path(PATH_MAX, Qt::Uninitialized);
    const auto size =
        ::readlink(link.constData(), path.data(), static_cast<std::size_t>(path.size()));
    if (size <= 0) {
        return {};
    }
    path.truncate(static_cast<int>(size));
    if (path.endsWith(deleted) && !isNameOfRunningFile(link.constData(), path.constData())) {
        path.chop(deleted.size());
    }
    return path;
}

QByteArray ownExecutable()
{
    return runningExecutable("/proc/self/exe");
}

} // namespace platform
