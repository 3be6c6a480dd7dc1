// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/FilePermissions.h"

#include "Platform/FileName.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

bool isWritable(const QString &path)
{
    const auto bytes = fileNameBytes(path);
    return !bytes.contains('\0') && ::faccessat(AT_FDCWD, bytes.constData(), W_OK, AT_EACCESS) == 0;
}

FileError setPermissions(const QString &path, mode_t mode)
{
    constexpr mode_t allModeBits = 07777;
    const auto bytes = fileNameBytes(path);
    if (bytes.contains('\0')) {
        return {EINVAL, path};
    }
    return ::chmod(bytes.constData(), mode & allModeBits) == 0 ? FileError()
                                                               : FileError(errno, path);
}

} // namespace platform
