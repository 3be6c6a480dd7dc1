// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Trees/RemoveItem.h"

#include <QByteArray>

namespace platform {

// A place for a new item until it is whole: a folder beside its final place, ".unfinished-" and
// some letters, into which nobody but this process's user can look, reach or put anything. It is
// locked while the process that made it lives. Once that process has ended, the next one that makes
// an item there removes it.
class UnfinishedItem {
public:
    UnfinishedItem() = default;
    // Takes away what has not been published.
    ~UnfinishedItem();
    UnfinishedItem(const UnfinishedItem &) = delete;
    UnfinishedItem &operator=(const UnfinishedItem &) = delete;

    // Each: 0, else the reason (errno).

    // Makes the place in an open folder, which must stay open; first clears what others have left
    // there.
    int create(int folder);
    // Gives the item its final name beside the place, which goes; EEXIST where something has that.
    int publish(const QByteArray &finalName);

    // The place, open. The item is to be made in it, under this name.
    int folder() const { return m_place.fd(); }
    static constexpr const char *name = "item";

private:
    int prepare() const;

    int m_folder = -1;
    QByteArray m_placeName;
    Descriptor m_place;
};

// Clears the places in an open folder whose maker is gone. Only folders of this process's own user
// that UnfinishedItem has marked, and none on file systems that do not keep owners and locks: on a
// network their maker may live elsewhere.
void clearUnfinishedItems(int folder);
// The same for what is done many times in a row in the same folder.
void clearUnfinishedItemsUnlessRecent(int folder);

// Removes an open folder that has this name in another one. The name disappears in one step;
// contents that cannot be removed are left as an unfinished item, unless nothing at all could be
// removed.
Removal removeAtOnce(int folder, const QByteArray &name, int open, const QString &path);

} // namespace platform
