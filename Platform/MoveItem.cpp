// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/MoveItem.h"

#include "Platform/CopyItem.h"
#include "Platform/ItemPlace.h"
#include "Platform/PathText.h"
#include "Platform/RemoveItem.h"

namespace platform {

FileError moveItem(const QString &source, const QString &destination)
{
    ItemPlace from;
    ItemPlace to;
    if (const auto error = openPlace(source, from); error != 0) {
        return {error, source};
    }
    if (const auto error = openPlace(destination, to); error != 0) {
        return {error, destination};
    }
    const auto error = renameInPlace(from.folder.number(), from.name, to.folder.number(), to.name);
    if (error == 0) {
        return {};
    }
    if (error != EXDEV) {
        return {error, error == EEXIST ? destination : source};
    }
    if (auto failure = copyItem(source, destination)) {
        return failure;
    }
    const auto removal =
        removeInFolder(from.folder.number(), from.name, deletingLastPathComponent(source));
    if (removal.error && !removal.hasRemovedAnything) {
        removeInFolder(to.folder.number(), to.name, deletingLastPathComponent(destination),
                       Obstinacy::MakeFoldersWritable);
    }
    return removal.error;
}

} // namespace platform
