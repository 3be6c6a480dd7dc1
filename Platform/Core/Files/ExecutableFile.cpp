// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/ExecutableFile.h"

#include "Platform/Core/Text/FileName.h"

#include <sys/stat.h>
#include <unistd.h>

namespace platform {

bool isExecutable(const QString &path)
{
    const auto name = fileNameBytes(path);
    return !name.contains('\0') && ::access(name.constData(), X_OK) == 0;
}

bool isExecutableFile(const QString &path)
{
    struct stat status {};
    return isExecutable(path) && ::stat(fileNameBytes(path).constData(), &status) == 0 &&
           S_ISREG(status.st_mode);
}

} // namespace platform
