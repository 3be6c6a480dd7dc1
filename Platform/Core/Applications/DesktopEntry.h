// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayList>
#include <QStringList>

#include <optional>

// Desktop entries of freedesktop.org (version 1.5): what a ".desktop" file says of an application.
namespace platform {

// More than the largest entries have with all their translations.
constexpr qint64 maxDesktopEntrySize = qint64(1024) * 1024;

// Absent values are null and empty.
struct DesktopEntry {
    QString name;
    QString genericName;
    QString comment;
    QStringList keywords;
    QString icon; // a name in the icon theme, or an absolute path
    QString exec; // quoted as in the file
    QString tryExec;
    bool noDisplay = false;
    bool hidden = false; // as good as deleted
    std::optional<QStringList> onlyShowIn;
    QStringList notShowIn;

    // Whether a desktop of these names (as in XDG_CURRENT_DESKTOP, in order) shows it among its
    // applications.
    bool isShownIn(const QStringList &desktops) const;

    // Name of the program that runs, without folder: "vlc" of "env A=b /usr/bin/vlc %U".
    QString program() const;

    // Whether the program that TryExec names is there; true if the entry has no TryExec.
    bool isInstalled() const;
};

// The entry in a file's bytes, its texts in the first of the locales that they have, as
// messageLocales() gives them. Nothing where there is no group "[Desktop Entry]" or it is not of
// the type "Application". Lines that mean nothing are passed over; of a key that stands twice the
// last one counts. Any thread.
std::optional<DesktopEntry> desktopEntryFromData(const QByteArray &data,
                                                 const QByteArrayList &locales);

} // namespace platform
