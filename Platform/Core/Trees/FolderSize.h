// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

namespace platform {

// Bytes of a file, or of all that is in a folder and below: the sizes of its files and of its
// symbolic links themselves, none for folders. A link at the path itself is followed to a folder.
// What cannot be read counts for nothing. Large trees are measured on two threads.
quint64 sizeOfItem(const QString &path);

struct ItemCount {
    quint64 bytes = 0; // as sizeOfItem()
    quint64 items = 0; // files, folders, links and what else there is, the item itself included
};

// The same and how many items there are. Ends early, with less, once shouldStop() is true, which
// any of its threads may ask.
ItemCount countItem(const QString &path, const std::function<bool()> &shouldStop);

} // namespace platform
