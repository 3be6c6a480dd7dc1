// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/ApplicationPanel/ApplicationListModel.h"

#include "Platform/Core/Applications/Workspace.h"

#include <QTextDocument>

#include <algorithm>
#include <array>
#include <utility>

namespace platform {
namespace {

constexpr int maxTextLength = 200; // more is never seen in a row

QString forSearch(const QString &text)
{
    const auto apart = text.normalized(QString::NormalizationForm_KD).toCaseFolded();
    QString plain;
    plain.reserve(apart.size());
    for (const auto letter : apart) {
        if (letter.category() != QChar::Mark_NonSpacing) {
            plain += letter;
        }
    }
    return plain;
}

QString shown(const QString &text)
{
    return text.left(maxTextLength).simplified();
}

// Behind the beginning, a part of a name begins behind anything that is no letter or digit.
bool beginsAPart(const QString &name, const QString &word)
{
    for (auto at = name.indexOf(word); at >= 0; at = name.indexOf(word, at + 1)) {
        if (at == 0 || !name.at(at - 1).isLetterOrNumber()) {
            return true;
        }
    }
    return false;
}

} // namespace

QStringList searchWords(const QString &text)
{
    return forSearch(text.left(maxTextLength).simplified())
        .split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

ApplicationRow::ApplicationRow(ApplicationBundle application, QString note)
    : m_application(std::move(application)), m_note(std::move(note)),
      m_name(forSearch(m_application.displayName().left(maxTextLength)))
{
    const auto &entry = m_application.entry();
    const QStringList texts{entry.genericName.left(maxTextLength),
                            entry.keywords.join(QLatin1Char('\n')).left(10 * maxTextLength),
                            m_application.program().left(maxTextLength)};
    m_texts = m_name + QLatin1Char('\n') + forSearch(texts.join(QLatin1Char('\n')));
}

QString ApplicationRow::description() const
{
    const auto &entry = m_application.entry();
    const auto comment = shown(entry.comment);
    const auto generic = shown(entry.genericName);
    const auto what = comment.isEmpty() ? generic : comment;
    const auto note = shown(m_note);
    return note.isEmpty() || what.isEmpty() ? note + what : note + QStringLiteral(" – ") + what;
}

int ApplicationRow::rank(const QStringList &words) const
{
    const auto areAll = [&](auto isFound) {
        return std::all_of(words.begin(), words.end(), isFound);
    };
    if (!areAll([&](const QString &word) { return m_texts.contains(word); })) {
        return -1;
    }
    if (words.isEmpty() || m_name.startsWith(words.constFirst())) {
        return 0;
    }
    return areAll([&](const QString &word) { return beginsAPart(m_name, word); }) ? 1 : 2;
}

void ApplicationListModel::setApplications(std::vector<ApplicationRow> rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    find();
    endResetModel();
}

void ApplicationListModel::setSearch(const QString &text)
{
    beginResetModel();
    m_words = searchWords(text);
    find();
    endResetModel();
}

void ApplicationListModel::find()
{
    std::array<std::vector<int>, 3> byRank;
    for (int i = 0; std::cmp_less(i, m_rows.size()); ++i) {
        const auto rank = m_rows[static_cast<std::size_t>(i)].rank(m_words);
        if (rank >= 0) {
            byRank.at(static_cast<std::size_t>(rank)).push_back(i);
        }
    }
    m_found.clear();
    for (const auto &rows : byRank) {
        m_found.insert(m_found.end(), rows.begin(), rows.end());
    }
}

int ApplicationListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_found.size());
}

QVariant ApplicationListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || std::cmp_greater_equal(index.row(), m_found.size())) {
        return {};
    }
    const auto found = m_found[static_cast<std::size_t>(index.row())];
    const auto &row = m_rows[static_cast<std::size_t>(found)];
    switch (role) {
    case Qt::DisplayRole:
        return shown(row.application().displayName());
    case Qt::DecorationRole:
        return iconForFile(row.application().path());
    case Qt::ToolTipRole:
        return Qt::convertFromPlainText(row.application().path());
    case Qt::AccessibleDescriptionRole:
    case DescriptionRole:
        return row.description();
    case PathRole:
        return row.application().path();
    default:
        return {};
    }
}

} // namespace platform
