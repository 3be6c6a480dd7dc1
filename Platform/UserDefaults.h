// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariantMap>

namespace platform {

// The preferences of the running program: a property list named after it in the user's
// "Library/Preferences". Main thread only.
class UserDefaults {
public:
    static UserDefaults &standardUserDefaults();

    // The value at a key path ("a.b" is the key "b" of the dictionary at "a"); invalid where
    // absent.
    QVariant valueForKeyPath(const QString &keyPath) const;

    // Sets the value, keeping all others, and writes the file at once. False when that failed.
    bool setValueForKeyPath(const QVariant &value, const QString &keyPath) const;

    // Where the values are kept.
    QString filePath() const;
};

} // namespace platform
