// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

#include <optional>

// Property lists, XML and binary, as QVariant: dictionaries are QVariantMap, arrays QVariantList,
// text QString, data QByteArray, dates QDateTime (UTC), integers qlonglong (qulonglong where they
// do not fit), reals double, truth values bool.
namespace platform {

// The value of a property list in any format; nothing when the bytes are not one.
std::optional<QVariant> propertyListFromData(const QByteArray &data);

// The XML form; empty when the value holds something that a property list cannot hold.
QByteArray propertyListToXml(const QVariant &value);

// The dictionary in a file; nothing when the file cannot be read or does not hold a dictionary.
std::optional<QVariantMap> dictionaryFromFile(const QString &path);

// Replaces the file by the dictionary's XML form atomically. False, with the system's words in
// error, when that failed; the old file is then untouched.
bool writeDictionaryToFile(const QVariantMap &dictionary, const QString &path,
                           QString *error = nullptr);

} // namespace platform
