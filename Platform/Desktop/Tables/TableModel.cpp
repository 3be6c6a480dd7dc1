// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Tables/TableModel.h"

#include "Platform/Core/Text/ShortText.h"

#include <QTextDocument>

#include <algorithm>

namespace platform {
namespace {

// UTF-16 units: more than a cell has room for, little enough to be laid out at once.
constexpr int maxTextLength = 512;

} // namespace

void TableModel::setColumns(QList<TableColumn> columns)
{
    beginResetModel();
    m_columns = std::move(columns);
    collect();
    endResetModel();
}

void TableModel::setDataSource(const TableDataSource *source)
{
    m_source = source;
    reload();
}

void TableModel::reload()
{
    beginResetModel();
    collect();
    endResetModel();
}

void TableModel::setFilter(const QString &words)
{
    m_words = words.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    reload();
}

void TableModel::collect()
{
    m_rows.clear();
    const int count = m_source != nullptr ? m_source->numberOfRowsInTableView() : 0;
    m_rows.reserve(static_cast<std::size_t>(count));
    for (int row = 0; row < count; ++row) {
        if (matches(row)) {
            m_rows.push_back(row);
        }
    }
}

bool TableModel::matches(int row) const
{
    if (m_words.isEmpty()) {
        return true;
    }
    QStringList texts;
    for (int column = 0; column < columnCount(); ++column) {
        texts.append(text(column, row));
    }
    return std::all_of(m_words.begin(), m_words.end(), [&texts](const QString &word) {
        return std::any_of(texts.begin(), texts.end(), [&word](const QString &text) {
            return text.contains(word, Qt::CaseInsensitive);
        });
    });
}

int TableModel::sourceRow(int shownRow) const
{
    return shownRow >= 0 && shownRow < rowCount() ? m_rows[static_cast<std::size_t>(shownRow)] : -1;
}

int TableModel::shownRow(int sourceRow) const
{
    const auto found = std::lower_bound(m_rows.begin(), m_rows.end(), sourceRow);
    return found != m_rows.end() && *found == sourceRow ? static_cast<int>(found - m_rows.begin())
                                                        : -1;
}

int TableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int TableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

Qt::ItemFlags TableModel::flags(const QModelIndex &index) const
{
    const auto flags = QAbstractTableModel::flags(index);
    return index.isValid() ? flags | Qt::ItemIsDragEnabled : flags;
}

QString TableModel::text(int column, int row) const
{
    const QVariant value =
        m_source->tableViewObjectValueForTableColumn(m_columns[column].identifier, row);
    return value.isValid() ? shortDescription(value, maxTextLength) : QString();
}

QVariant TableModel::data(const QModelIndex &index, int role) const
{
    const int row = sourceRow(index.row());
    // The source may have fewer rows by now and not have been asked to be shown again.
    if (row < 0 || m_source == nullptr || row >= m_source->numberOfRowsInTableView()) {
        return {};
    }
    if (role == Qt::DisplayRole) {
        return text(index.column(), row);
    }
    if (role != Qt::DecorationRole && role != Qt::ToolTipRole && role != NoteRole &&
        role != Qt::AccessibleDescriptionRole) {
        return {};
    }
    TableCell cell;
    m_source->tableViewWillDisplayCell(cell, m_columns[index.column()].identifier, row);
    if (role == Qt::DecorationRole) {
        return cell.image.isNull() ? QVariant() : QVariant(cell.image);
    }
    if (role == NoteRole) {
        return shortened(cell.note, maxTextLength);
    }
    const QString tip = shortened(cell.toolTip, maxTextLength);
    if (tip.isEmpty()) {
        return {};
    }
    return role == Qt::ToolTipRole && Qt::mightBeRichText(tip) ? tip.toHtmlEscaped() : tip;
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const bool known = orientation == Qt::Horizontal && section >= 0 && section < columnCount();
    if (!known) {
        return {};
    }
    if (role == Qt::DisplayRole) {
        return m_columns[section].title;
    }
    return role == Qt::TextAlignmentRole
               ? QVariant(static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter))
               : QVariant();
}

} // namespace platform
