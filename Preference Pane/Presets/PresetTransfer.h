// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// Presets that come from elsewhere or go there, as whole files.
namespace presets {

// Why a file is no preset, or a larger one than anybody needs, for people; null when it is one. An
// imported preset has at most 1 MB, 1,000 applications and 500 characters in a text, which is what
// the page can show.
QString reasonAgainst(const QString &path);

// Makes the file the user's preset of that title, byte for byte. An existing one is replaced.
// False, with the reason in error, where that failed.
bool importFile(const QString &path, const QString &title, QString *error);

// Makes a copy of a preset's file, byte for byte, the user's preset of a title that is not taken.
// False, with the reason in error, where that failed.
bool copyFile(const QString &preset, const QString &title, QString *error);

// Copies a preset's file, byte for byte, to a path of the user's choice, where it replaces what is
// there. False, with the reason in error, where that failed.
bool exportFile(const QString &preset, const QString &path, QString *error);

// The title, or the first of "title 2", "title 3", ... that the user has no preset of.
QString freeTitle(const QString &title);

// A preset of the user's, kept to be put back.
class KeptPreset {
public:
    KeptPreset() = default;
    // Reads the user's preset of that title. Null where there is none.
    explicit KeptPreset(const QString &title);

    bool isNull() const { return m_contents.isNull(); }
    const QString &title() const { return m_title; }
    qint64 size() const { return m_contents.size() + m_replacement.size(); } // bytes

    // The user's preset of that title is now one that we have put in its place.
    void noteReplacement();
    // Writes it under its title, in the place of what has replaced it, or under a free title where
    // the user has made another of that title. The title; null, with the reason in error, where
    // that failed.
    QString putBack(QString *error) const;

private:
    QString m_title;
    QByteArray m_contents;
    QByteArray m_replacement;
};

} // namespace presets
