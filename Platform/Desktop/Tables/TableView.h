// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/Tables/TableModel.h"

#include <QTableView>

#include <functional>

namespace platform {

// NSTableView: shows the rows of a data source, one of which may be selected. Rows are the
// source's, whatever a filter shows. Main thread only.
class TableView : public QTableView {
    Q_OBJECT
public:
    explicit TableView(QWidget *parent = nullptr);

    void setColumns(const QList<TableColumn> &columns);
    // Not owned; must outlive the view or be taken from it.
    void setDataSource(const TableDataSource *source);

    // Asks the source for everything again. The selection stays at its row, as long as there is
    // one.
    void reloadData();

    // As TableModel::setFilter(). What is hidden is no longer selected.
    void setFilter(const QString &words);

    // -1 for none.
    int selectedRow() const;
    // Selects only that row and brings it into sight; none where it is not shown.
    void selectOnlyRow(int row);
    // The same for a row that people have to see: a filter that hides it ends.
    void revealRow(int row);

Q_SIGNALS:
    // The user or the program selected another row, or none. Not sent by a reload that keeps it.
    void selectionDidChange();
    // A row was double-clicked, or Enter pressed on it.
    void doubleAction();
    // revealRow() has ended the filter.
    void filterEnded();

protected:
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void followSelection();
    void resetRows(const std::function<void()> &reset);

    TableModel *m_model;
    bool m_isResetting = false;
    bool m_isKeyPress = false;
};

} // namespace platform
