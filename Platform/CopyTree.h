// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/FileError.h"

#include <QByteArray>

#include <sys/stat.h>

// The parts of copyItem().
namespace platform {

// Copies a folder with all that is in it under a name that nothing has. The copy has that name only
// when it is whole; where it fails nothing is left. The source's path is for the error's words.
FileError copyTree(int fromFolder, const QByteArray &from, int toFolder, const QByteArray &to,
                   const QString &source);

// Copies what is neither a file nor a folder, in one step. 0, else the reason (errno).
int copySpecial(int fromFolder, const QByteArray &from, const struct stat &status, int toFolder,
                const QByteArray &to);

} // namespace platform
