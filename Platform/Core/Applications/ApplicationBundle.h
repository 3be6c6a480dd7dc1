// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Applications/DesktopEntry.h"

#include <QString>

namespace platform {

// An application at a path: an ".app" folder with an information property list, or a desktop entry.
// A snapshot of what was there when it was opened. Any thread.
class ApplicationBundle {
public:
    // No application.
    ApplicationBundle() = default;

    /// bundleWithPath:
    /// No application where nothing is at the path, or something else: a folder of another name or
    /// without a readable "Contents/Info.plist", a file that is no desktop entry of an application.
    static ApplicationBundle withPath(const QString &path);

    bool isNull() const { return m_path.isNull(); }
    // Absolute, without slashes at the end.
    const QString &path() const { return m_path; }
    bool isFolder() const { return m_isFolder; }

    /// bundleIdentifier
    /// "CFBundleIdentifier", null where the folder names none; the desktop-file id of an entry,
    /// with its ending ".desktop".
    const QString &bundleIdentifier() const { return m_identifier; }

    // "CFBundleDisplayName", "CFBundleName" or "Name", else the file name less its ending.
    const QString &displayName() const { return m_entry.name; }

    // Name of the program that runs, without folder; may be empty.
    const QString &program() const { return m_program; }

    // "CFBundleIconFile", or "Icon" of the entry; empty where there is none.
    const QString &icon() const { return m_entry.icon; }

    // What else a desktop entry says; nothing for a folder.
    const DesktopEntry &entry() const { return m_entry; }

    // Whether a list of applications shows it in this desktop session: not hidden, not meant for
    // other desktops only, and its program is there.
    bool isListed() const;

private:
    bool readFolder();
    bool readEntry();

    QString m_path;
    bool m_isFolder = false;
    QString m_identifier;
    QString m_program;
    DesktopEntry m_entry; // of a folder, the name and the icon
};

} // namespace platform
