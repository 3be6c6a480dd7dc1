// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/ProcessList.h"

#include "Platform/Core/Basics/RunningExecutable.h"
#include "Platform/Core/Bundles/Bundle.h"

#include <QFile>

#include <dirent.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstring>
#include <memory>
#include <string_view>

namespace platform {
namespace {

struct CloseFolder {
    void operator()(DIR *folder) const { ::closedir(folder); }
};

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
        auto executable = runningExecutable(::dirfd(folder.get()), link.data());
        if (!executable.isEmpty() && visit(ProcessInformation(pid, std::move(executable)))) {
            return true;
        }
    }
    return false;
}

} // namespace platform
