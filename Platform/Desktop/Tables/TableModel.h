// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/Tables/TableDataSource.h"

#include <QAbstractTableModel>

#include <vector>

namespace platform {

struct TableColumn {
    QString identifier;
    QString title;
};

// The rows of a data source that match a filter, as a model. Values are asked from the source
// whenever a view wants them; how many rows there are, only by reload() and setFilter().
class TableModel : public QAbstractTableModel {
    Q_OBJECT
public:
    // TableCell::note
    static constexpr int NoteRole = Qt::UserRole;

    using QAbstractTableModel::QAbstractTableModel;

    void setColumns(QList<TableColumn> columns);
    // Not owned; null for none.
    void setDataSource(const TableDataSource *source);
    void reload();

    // Shows the rows that have every one of these words in the text of some column, in either case.
    // Counts what a cell shows: the first 512 UTF-16 units.
    // Empty: all rows.
    void setFilter(const QString &words);

    // Between the rows of the source and those shown; -1 where there is none.
    int sourceRow(int shownRow) const;
    int shownRow(int sourceRow) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    // Rows may be dragged where the view lets them.
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QString text(int column, int row) const;
    bool matches(int row) const;
    void collect();

    QList<TableColumn> m_columns;
    const TableDataSource *m_source = nullptr;
    QStringList m_words;
    std::vector<int> m_rows;
};

} // namespace platform
