// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Files/FileReference.h"

#include <QColor>

#include <cstdint>
#include <optional>

// What the desktop and its file managers know of items. Part of ZQFileManager.
class ZQFileManagerDesktop {
public:
    ZQFileManagerDesktop() = delete;

    /// notifyFileSystemChanged:
    /// Tells the desktop's file managers that the item changed: one notice, without waiting.
    static void notifyFileSystemChanged(const QString &path);
    /// stringToFSRef:
    static std::optional<platform::FileReference> stringToFSRef(const QString &path);
    /// stringWithFSRef:
    static QString stringWithFSRef(const platform::FileReference &reference);

    /// finderColorIndexForPath:
    /// The whole flags word of the Finder information, with all that is in it beside the colour:
    /// existing callers rely on it. 0 where that cannot be read.
    static std::uint16_t finderColorIndexForPath(const QString &path);
    /// setFinderColorIndex:forPath:
    /// Replaces the colour's bits, 1 to 3, by the index's. Failures are silent.
    static void setFinderColorIndex(std::uint16_t index, const QString &path);
    /// finderColorForColorIndex:
    /// The colours of the indexes 2 to 15, two for each; invalid for any other.
    static QColor finderColorForColorIndex(int index);
    /// finderColorForPath:
    static QColor finderColorForPath(const QString &path);

    /// registerApplicationWithLaunchServices:
    /// Makes an application known to the desktop, or known anew.
    static bool registerApplicationWithLaunchServices(const QString &path);
};

// Sends the notice of notifyFileSystemChanged(). 0, or why the reference leads nowhere (errno).
int SendFinderSyncEvent(const platform::FileReference &item);
