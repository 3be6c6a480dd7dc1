// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QString>
#include <QVariant>

namespace platform {

// How a cell is shown beside its value.
struct TableCell {
    QIcon image;
    QString toolTip;
    // A few words beside the value; a view shows them where its delegate is a NoteDelegate.
    QString note;
};

// Where a table gets its rows from, asked anew for each cell that is shown. Rows count from 0;
// columns have identifiers.
class TableDataSource {
public:
    TableDataSource() = default;
    virtual ~TableDataSource() = default;
    TableDataSource(const TableDataSource &) = delete;
    TableDataSource &operator=(const TableDataSource &) = delete;

    /// numberOfRowsInTableView:
    virtual int numberOfRowsInTableView() const = 0;
    /// tableView:objectValueForTableColumn:row:
    virtual QVariant tableViewObjectValueForTableColumn(const QString &column, int row) const = 0;
    /// tableView:willDisplayCell:forTableColumn:row:
    virtual void tableViewWillDisplayCell(TableCell & /*cell*/, const QString & /*column*/,
                                          int /*row*/) const
    {
    }
};

} // namespace platform
