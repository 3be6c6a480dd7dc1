// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FilePermissions.h"

#include "Platform/Core/Basics/DescriptorPath.h"
#include "Platform/Core/Files/OpenPath.h"
#include "Platform/Core/Text/FileName.h"

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
    Descriptor item;
    auto error = openPath(AT_FDCWD, fileNameBytes(path), LastLink::Follow, item);
    if (error == 0 && ::chmod(pathOfDescriptor(item.fd()).constData(), mode & allModeBits) != 0) {
        error = errno;
    }
    return error == 0 ? FileError() : FileError(error, path);
}

} // namespace platform
