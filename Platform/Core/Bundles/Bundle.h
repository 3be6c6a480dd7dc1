// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariantMap>

namespace platform {

// A bundle: a folder with "Contents/Info.plist", programs in "Contents/MacOS" and resources in
// "Contents/Resources". A program outside any bundle counts as the main bundle, made of its folder.
class Bundle {
public:
    // No bundle.
    Bundle() = default;
    explicit Bundle(QString path) : m_path(std::move(path)) {}

    // The bundle of the running program.
    static Bundle main();

    // The bundle whose program or plug-in holds this address; the main bundle for the program's
    // own, and for a library outside any bundle.
    static Bundle containing(const void *address);

    // The bundle that a program lies in as "Contents/MacOS/NAME"; no bundle for any other place.
    static Bundle ofProgram(const QString &program);

    bool isNull() const { return m_path.isNull(); }
    const QString &path() const { return m_path; }

    // "Contents/Info.plist", read at each call; empty where there is none.
    QVariantMap infoDictionary() const;

    // Full path of the executable: "CFBundleExecutable" in "Contents/MacOS", or the program itself.
    // Null where there is none.
    QString executablePath() const;

    // Path of a file in the resources, null where it does not exist.
    QString pathForResource(const QString &name, const QString &type) const;

    // localizedStringForKey:value:table: of the table "Localizable": the text of
    // "LANGUAGE.lproj/Localizable.strings" (a property list) in the resources, for the first of the
    // user's languages that has such a file. Else the value or, where that is empty, the key.
    QString localizedString(const QString &key, const QString &value) const;

private:
    QString m_path;
    QString m_executable;
};

} // namespace platform
