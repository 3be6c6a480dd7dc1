// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/RunningExecutable.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <string_view>

namespace platform {
namespace {

// The file that a process runs still has this name.
bool isNameOfRunningFile(int folder, const char *link, const char *name)
{
    struct stat running {};
    struct stat named {};
    return ::fstatat(folder, link, &running, 0) == 0 && ::stat(name, &named) == 0 &&
           running.st_dev == named.st_dev && running.st_ino == named.st_ino;
}

} // namespace

QByteArray runningExecutable(int folder, const char *link)
{
    constexpr std::string_view deleted = " (deleted)"; // the kernel's mark for a file that is gone
    std::array<char, PATH_MAX> target; // not cleared: this runs for every process of the machine
    const auto size = ::readlinkat(folder, link, target.data(), target.size() - 1);
    if (size <= 0) {
        return {};
    }
    target[static_cast<std::size_t>(size)] = 0;
    std::string_view path(target.data(), static_cast<std::size_t>(size));
    if (path.ends_with(deleted) && !isNameOfRunningFile(folder, link, target.data())) {
        path.remove_suffix(deleted.size());
    }
    return {path.data(), static_cast<int>(path.size())};
}

QByteArray ownExecutable()
{
    return runningExecutable(AT_FDCWD, "/proc/self/exe");
}

} // namespace platform
