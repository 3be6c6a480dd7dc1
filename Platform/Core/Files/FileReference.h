// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <sys/types.h>

#include <optional>

namespace platform {

// A file-system reference: one item of a file system, not merely whatever has its path.
struct FileReference {
    dev_t device = 0;
    ino_t inode = 0;
    QString path;
};

// Of the item with this path (of a symbolic link itself); nothing where there is none.
std::optional<FileReference> makeFileReference(const QString &path);

// 0 where the item still has its path, else why not: ENOENT or what the system says.
int checkFileReference(const FileReference &reference);

} // namespace platform
