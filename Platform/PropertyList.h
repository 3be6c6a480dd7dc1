// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

#include <optional>

// Property lists, XML and binary, as QVariant: dictionaries are QVariantMap, arrays QVariantList,
// text QString, data QByteArray, dates QDateTime (UTC, whole seconds), integers qlonglong
// (qulonglong where they do not fit), reals double, truth values bool. UIDs of the binary form are
// read as the dictionary {"CF$UID": number} that stands for them in the XML form. What has the form
// of a date but is none, and dates after the year 9999, may become another date or an invalid
// value; invalid values are left out when written.
//
// libplist reads and writes; it takes malformed numbers for what C makes of them, UTF-8 only, and
// no nulls.
//
// No input crashes, blocks or exhausts the process; PropertyListLimits.h has the bounds. Any
// thread.
namespace platform {

// The value of a property list in either form; nothing when the bytes are not a whole one.
std::optional<QVariant> propertyListFromData(const QByteArray &data);

// The XML form; empty when the value holds something that a property list cannot hold. Characters
// that XML cannot hold (control characters, halves of surrogate pairs) become U+FFFD.
QByteArray propertyListToXml(const QVariant &value);

// The dictionary in a file; nothing when the file is not a regular one, cannot be read or does not
// hold a dictionary.
std::optional<QVariantMap> dictionaryFromFile(const QString &path);

// The array in a file, likewise.
std::optional<QVariantList> arrayFromFile(const QString &path);

// Replaces the file by the dictionary's XML form atomically, as replaceFile() does. False, with the
// reason in error, when that failed; the old file is then untouched.
bool writeDictionaryToFile(const QVariantMap &dictionary, const QString &path,
                           QString *error = nullptr);

} // namespace platform
