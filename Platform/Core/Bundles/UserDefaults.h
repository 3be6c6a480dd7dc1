// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariantMap>

namespace platform {

// The preferences of the running program: a property list in the user's "Library/Preferences",
// named after the main bundle's identifier, or after the program where it has none. Read and
// written at each call; nothing is kept in between. Main thread only.
class UserDefaults {
public:
    static UserDefaults &standardUserDefaults();

    // The value at a key path ("a.b" is the key "b" of the dictionary at "a"); invalid where
    // absent.
    QVariant valueForKeyPath(const QString &keyPath) const;

    // Sets the value, keeping all others, and writes the file at once, making its folder where
    // there is none. An invalid value removes what is there. A damaged file is kept beside the new
    // one. False, with nothing changed, where the path leads through a value that is no dictionary,
    // and, with a console line, when writing failed.
    bool setValueForKeyPath(const QVariant &value, const QString &keyPath) const;

    // Where the values are kept.
    QString filePath() const;
};

} // namespace platform
