// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <QByteArray>
#include <QString>

namespace platform {

// Where an item is: a name in an open folder. What is done there is not led astray when a folder
// above is renamed or replaced by a link meanwhile.
struct ItemPlace {
    Descriptor folder;
    QByteArray name;
};

// Takes a path apart, slashes at the end aside: the item is what has the name, a symbolic link
// itself included. 0, else the reason (errno): EINVAL for what has no name of its own, "/", "." and
// "..", and for a path with a NUL in it. As openPath() for the links on the way.
int openPlace(const QString &path, ItemPlace &place);

// A name for something unfinished, new at every call. Begins with a dot.
QByteArray temporaryName();
// Whether it looks like one.
bool isTemporaryName(const char *name);

// Renames inside one file system. 0, else the reason (errno): EEXIST where the new name exists.
int renameInPlace(int fromFolder, const QByteArray &from, int toFolder, const QByteArray &to);

} // namespace platform
