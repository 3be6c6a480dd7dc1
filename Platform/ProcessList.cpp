// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/ProcessList.h"

#include "Platform/Bundle.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <climits>
#include <cstring>
#include <memory>
#include <string_view>

namespace platform {
namespace {

struct CloseFolder {
    void operator()(DIR *folder) const { ::closedir(folder); }
};

// The file that a process runs still has this name.
bool isNameOfRunningFile(int folder, const char *link, const char *name)
{
    struct stat running {};
    struct stat named {};
    return ::fstatat(folder, link, &running, 0) == 0 && ::stat(name, &named) == 0 &&
           running.st_dev == named.st_dev && running.st_ino == named.st_ino;
}

// The path in a link "PID/exe"; empty where the process has ended, belongs to the kernel or may not
// be looked at.
QByteArray executableOf(int folder, const char *link)
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

} // namespace

QString ProcessInformation::value(const QString &key) const
{
    if (key == QLatin1String("CFBundleExecutable")) {
        return QFile::decodeName(m_executable);
    }
    if (key == QLatin1String("CFBundleName")) {
        const auto name =
            Bundle::ofProgram(QFile::decodeName(m_executable)).infoDictionary().value(key);
        return name.userType() == QMetaType::QString ? name.toString() : QString();
    }
    return {};
}

bool findProcess(const std::function<bool(const ProcessInformation &)> &visit)
{
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir("/proc"));
    if (!folder) {
        return false;
    }
    while (const auto *entry = ::readdir(folder.get())) {
        const std::string_view name(&entry->d_name[0]);
        pid_t pid = 0;
        const auto number = std::from_chars(name.data(), name.data() + name.size(), pid);
        if (number.ec != std::errc() || number.ptr != name.data() + name.size()) {
            continue;
        }
        std::array<char, 32> link{}; // longer than any number and "/exe"
        std::memcpy(link.data(), name.data(), name.size());
        std::memcpy(link.data() + name.size(), "/exe", 4);
        auto executable = executableOf(::dirfd(folder.get()), link.data());
        if (!executable.isEmpty() && visit(ProcessInformation(pid, std::move(executable)))) {
            return true;
        }
    }
    return false;
}

QByteArray ownExecutable()
{
    return executableOf(AT_FDCWD, "/proc/self/exe");
}

} // namespace platform
