// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FilePackage.h"

#include "Platform/Core/Text/FileName.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>

namespace platform {
namespace {

bool hasPackageEnding(QByteArray path)
{
    static constexpr std::array endings{".app", ".bundle", ".framework", ".plugin", ".prefpane"};
    while (path.endsWith('/')) {
        path.chop(1);
    }
    const auto name = path.mid(path.lastIndexOf('/') + 1);
    const auto dot = name.lastIndexOf('.');
    const auto ending = name.mid(dot).toLower();
    return dot > 0 && std::any_of(endings.begin(), endings.end(),
                                  [&](const char *known) { return ending == known; });
}

} // namespace

bool isFilePackage(const QString &path)
{
    const auto name = fileNameBytes(path);
    struct stat status {};
    return hasPackageEnding(name) && !name.contains('\0') &&
           ::stat(name.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace platform
