// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Trees/CopyItem.h"

namespace platform {

// The parts of copyPlace() for what is no file.

// Copies a folder with all that is in it, on several threads.
FileError copyTree(const ItemPlace &from, const ItemPlace &to, const QString &source,
                   CopyProgress &progress, CopyPurpose purpose, CopiedItem &copied);

// Copies what is neither a file nor a folder into a folder in which nobody else can replace it. 0,
// else the reason (errno).
int copySpecial(int fromFolder, const QByteArray &from, const struct stat &status, int toFolder,
                const QByteArray &to);

} // namespace platform
