// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/Jobs/LaunchUnitPath.h"

#include <sys/stat.h>
#include <systemd/sd-path.h>

#include <cstdlib>

namespace platform {
namespace {

bool isGenerated(const QByteArray &folder)
{
    const QByteArray name = folder.mid(folder.lastIndexOf('/') + 1);
    return name == "generator" || name.startsWith("generator.");
}

} // namespace

QByteArray unitOfAnotherOrigin(const QByteArray &unitName)
{
    char **folders = nullptr;
    if (::sd_path_lookup_strv(SD_PATH_SYSTEMD_SEARCH_USER_UNIT, nullptr, &folders) < 0) {
        return {};
    }
    QByteArray found;
    for (auto **folder = folders; *folder != nullptr; ++folder) { // NOLINT(*-pointer-arithmetic)
        const QByteArray path = QByteArray(*folder) + '/' + unitName;
        struct stat status {};
        if (found.isEmpty() && !isGenerated(*folder) && ::lstat(path.constData(), &status) == 0) {
            found = path;
        }
        std::free(*folder); // NOLINT(*-no-malloc,*-owning-memory)
    }
    std::free(static_cast<void *>(folders)); // NOLINT(*-no-malloc,*-owning-memory)
    return found;
}

} // namespace platform
