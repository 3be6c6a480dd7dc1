// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariantMap>

#include <optional>

// Keys and tests of the listener preferences file.
namespace listenerPreferences {

inline const QString autoUpdateCheck = QStringLiteral("autoUpdateCheck");
inline const QString volChangeFeedback = QStringLiteral("volChangeFeedback");
inline const QString customPortSet = QStringLiteral("customPortSet");
inline const QString customPort = QStringLiteral("customPort");
inline const QString disableBonjour = QStringLiteral("disableBonjour");
inline const QString confirmConnections = QStringLiteral("confirmConnections");
inline const QString limitToOneConnection = QStringLiteral("limitToOneConnection");
inline const QString selectedMACAddress = QStringLiteral("selectedMACAddress");
inline const QString lastRunVersion = QStringLiteral("lastRunVersion");

// The file, in the user's preferences folder.
QString filePath();

// A fresh load; empty when the file is missing, unreadable or not a dictionary.
QVariantMap load();

// Replaces the file atomically. A file there that load() could not read stays beside it, its name
// ending in ".damaged".
bool write(const QVariantMap &preferences);

// The value as an integer, a real cut to one, beyond 64 bits the nearest that fits; nothing for
// what is not a number or truth value. Text is no number.
std::optional<qlonglong> number(const QVariant &value);

// For files of versions without them: two settings are off only at 0, whatever else is stored ...
bool isOnUnlessZero(const QVariantMap &preferences, const QString &key);
// ... and the others are on only at 1.
bool isOnOnlyAtOne(const QVariantMap &preferences, const QString &key);

} // namespace listenerPreferences
