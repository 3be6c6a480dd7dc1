// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Bundles/Bundle.h"

#include <QStringList>
#include <QVariantMap>

#include <optional>

// Keyboard-layout presets: a property list "TITLE.okl" each, in the user's folder or, read only,
// among the pane's own default layouts. Documentation/Presets.md has the format.
namespace presets {

inline const QString ending = QStringLiteral(".okl");

inline const QString nameKey = QStringLiteral("name");
inline const QString bundleIdKey = QStringLiteral("bundleid");
inline const QString bundleIdsKey = QStringLiteral("bundleids");
inline const QString keysKey = QStringLiteral("keys");

// In an entry of "keys".
inline const QString valueKey = QStringLiteral("val");
inline const QString keyCodeKey = QStringLiteral("keycode");
inline const QString modifiersKey = QStringLiteral("modifiers");

QString userFolder();
QString defaultFolder(const platform::Bundle &bundle);

// The user's file of that title, whether it exists or not.
QString userFile(const QString &title);

/// pathForPreset:
/// The user's file where there is one, else the path of the default one, which may not exist.
QString pathForPreset(const platform::Bundle &bundle, const QString &title);

// Names of the presets in a folder, with their ending, which counts in small letters only.
QStringList fileNames(const QString &folder);

// The file's name less its ending.
QString titleOf(const QString &fileName);

// The applications that a preset says it is for: "bundleids", then "bundleid", also where it stands
// there already: the listener sees both. What is no text is left out.
QStringList identifiers(const QVariantMap &preset);

// The preset in a file, as a dictionary; nothing where it cannot be read or has more than 16 MB,
// which take about as long to read as people wait.
std::optional<QVariantMap> read(const QString &path);

// The identifiers of each of these files, none of one that cannot be read. So that no folder keeps
// the page from opening, files are left out that would make it more than 32 MB in all, with 4 KB
// for each file besides.
QList<QStringList> identifiersOfFiles(const QStringList &paths);

// A preset without shortcuts.
QVariantMap blank(const QString &name, const QString &identifier);

} // namespace presets
