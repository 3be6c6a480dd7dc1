// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

#include <optional>

// Property lists, XML and binary, as QVariant: dictionaries are QVariantMap, arrays QVariantList,
// text QString, data QByteArray, dates QDateTime (UTC, whole seconds: the XML form has no
// fractions), integers qlonglong (qulonglong where they do not fit), reals double, truth values
// bool. UIDs of the binary form are read as the dictionary {"CF$UID": number} that stands for them
// in the XML form. Invalid values are left out when written. What is read and written is read again
// as it was. A file that holds what would not be (dates that are none, integers beyond 64 bits,
// zeros and halves of surrogate pairs in texts) is not read, as by other readers.
//
// libplist reads and writes; it takes malformed numbers for what C makes of them, UTF-8 only, and
// no nulls.
//
// No input crashes, blocks or exhausts the process; PropertyListLimits.h has the bounds. Any
// thread.
namespace platform {

// The value of a property list in either form; nothing when the bytes are not a whole one.
std::optional<QVariant> propertyListFromData(const QByteArray &data);

// The XML form; empty when the value holds something that it cannot hold. Of texts, zeros and
// halves of surrogate pairs become U+FFFD.
QByteArray propertyListToXml(const QVariant &value);

// The XML form, or the binary one where XML cannot hold a value that this can: other control
// characters, U+FFFE, U+FFFF, years before 1 and after 9999 (which not every reader takes). Empty,
// with the reason in error, when the value holds something that a property list cannot hold.
QByteArray propertyListToData(const QVariant &value, QString *error = nullptr);

// The dictionary in a file; nothing when the file is not a regular one, cannot be read or does not
// hold a dictionary.
std::optional<QVariantMap> dictionaryFromFile(const QString &path);

// The array in a file, likewise.
std::optional<QVariantList> arrayFromFile(const QString &path);

// Replaces the file by propertyListToData() atomically, as replaceFile() does. False, with the
// reason in error, when that failed; the old file is then untouched.
bool writeDictionaryToFile(const QVariantMap &dictionary, const QString &path,
                           QString *error = nullptr);

} // namespace platform
