// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Applications/ApplicationBundle.h"

#include <QAbstractListModel>

#include <vector>

namespace platform {

// An application of a list, with what a search looks at.
class ApplicationRow {
public:
    explicit ApplicationRow(ApplicationBundle application, QString note = {});

    const ApplicationBundle &application() const { return m_application; }
    // The note, if any, and what it is, in a few words; may be empty.
    QString description() const;

    // 0 where the name begins with the words, 1 where a part of it does, 2 where they are elsewhere
    // in its texts; -1 where one of them is nowhere. The words are as searchWords() gives them.
    int rank(const QStringList &words) const;

private:
    ApplicationBundle m_application;
    QString m_note;
    QString m_name; // prepared, as are the texts
    QString m_texts;
};

// The words of a search, without case and accents.
QStringList searchWords(const QString &text);

// Applications, or those of them that a search finds, best first: each word has to be in the name,
// the generic name, the keywords or the name of the program.
class ApplicationListModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { PathRole = Qt::UserRole, DescriptionRole };

    using QAbstractListModel::QAbstractListModel;

    // Keeps the search.
    void setApplications(std::vector<ApplicationRow> rows);
    void setSearch(const QString &text);
    // How many there are, found or not.
    int total() const { return static_cast<int>(m_rows.size()); }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    void find();

    std::vector<ApplicationRow> m_rows;
    std::vector<int> m_found;
    QStringList m_words;
};

} // namespace platform
