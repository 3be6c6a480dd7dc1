// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace platform {

// Bytes of a file, or of all that is in a folder and below: the sizes of its files and of its
// symbolic links themselves, none for folders. A link at the path itself is followed to a folder.
// What cannot be read counts for nothing. Large trees are measured on two threads.
quint64 sizeOfItem(const QString &path);

} // namespace platform
