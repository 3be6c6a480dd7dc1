// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/FileError.h"

#include <QByteArray>

namespace platform {

class CopyProgress;

// A part of copyItem(): copies a folder with all that is in it, on several threads, under a name
// that nothing has. The copy has that name only when it is whole; of one that fails or is cancelled
// nothing is left. Hard links among its files are kept. The source's path is for the error's words.
FileError copyTreeInParallel(int fromFolder, const QByteArray &from, int toFolder,
                             const QByteArray &to, const QString &source, CopyProgress &progress);

} // namespace platform
