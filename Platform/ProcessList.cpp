// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/ProcessList.h"

#include "Platform/PropertyList.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <climits>
#include <cstring>
#include <memory>

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
        static const auto middle = QStringLiteral("/Contents/MacOS/");
        const auto executable = QFile::decodeName(m_executable);
        const auto end = executable.lastIndexOf(QLatin1Char('/')) + 1 - middle.size();
        if (end > 0 && executable.mid(end, middle.size()) == middle) {
            const auto info =
                dictionaryFromFile(executable.left(end) + QStringLiteral("/Contents/Info.plist"));
            return info ? info->value(key).toString() : QString();
        }
    }
    return {};
}

bool findProcess(const std::function<bool(const ProcessInformation &)> &visit)
{
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir("/proc"));
    if (!folder) {
        return false;
    }
    std::array<char, PATH_MAX> target{};
    std::array<char, 32> link{};
    while (const auto *entry = ::readdir(folder.get())) {
        const auto *name = &entry->d_name[0];
        const auto length = std::strlen(name);
        pid_t pid = 0;
        const auto number = std::from_chars(name, name + length, pid);
        if (number.ec != std::errc() || number.ptr != name + length || length + 5 > link.size()) {
            continue;
        }
        std::memcpy(link.data(), name, length);
        std::memcpy(link.data() + length, "/exe", 5);
        const auto size =
            ::readlinkat(::dirfd(folder.get()), link.data(), target.data(), target.size());
        if (size <= 0) {
            continue;
        }
        QByteArray executable(target.data(), static_cast<int>(size));
        if (executable.endsWith(" (deleted)")) {
            executable.chop(10);
        }
        if (visit(ProcessInformation(pid, std::move(executable)))) {
            return true;
        }
    }
    return false;
}

} // namespace platform
