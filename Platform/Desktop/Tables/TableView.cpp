// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Tables/TableView.h"

#include <QFocusEvent>
#include <QHeaderView>

namespace platform {

TableView::TableView(QWidget *parent) : QTableView(parent), m_model(new TableModel(this))
{
    constexpr int rowPadding = 6; // pixels above and below the text together
    setModel(m_model);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setShowGrid(false);
    setWordWrap(false);
    setAlternatingRowColors(true);
    setHorizontalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(
        qMax(fontMetrics().height() + rowPadding, verticalHeader()->minimumSectionSize()));
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setHighlightSections(false);
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        followSelection();
        if (!m_isResetting) {
            Q_EMIT selectionDidChange();
        }
    });
    connect(this, &QTableView::doubleClicked, this, &TableView::doubleAction);
    // Where the desktop opens things with one click, a view is activated by that, too.
    connect(this, &QTableView::activated, this, [this] {
        if (m_isKeyPress) {
            Q_EMIT doubleAction();
        }
    });
}

// A screen reader selects a row without making it the current one, on which Enter and the arrows
// act.
void TableView::followSelection()
{
    const auto rows = selectionModel()->selectedRows();
    if (!rows.isEmpty() && rows.first().row() != currentIndex().row()) {
        selectionModel()->setCurrentIndex(rows.first(), QItemSelectionModel::NoUpdate);
    }
}

void TableView::setColumns(const QList<TableColumn> &columns)
{
    m_model->setColumns(columns);
}

void TableView::setDataSource(const TableDataSource *source)
{
    resetRows([this, source] { m_model->setDataSource(source); });
}

void TableView::reloadData()
{
    resetRows([this] { m_model->reload(); });
}

void TableView::setFilter(const QString &words)
{
    resetRows([this, &words] { m_model->setFilter(words); });
}

void TableView::resetRows(const std::function<void()> &reset)
{
    const int row = selectedRow();
    m_isResetting = true;
    reset();
    if (row >= 0) {
        selectOnlyRow(row);
    }
    m_isResetting = false;
    if (selectedRow() != row) {
        Q_EMIT selectionDidChange();
    }
}

int TableView::selectedRow() const
{
    const auto rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : m_model->sourceRow(rows.first().row());
}

void TableView::selectOnlyRow(int row)
{
    const int shown = m_model->shownRow(row);
    if (shown < 0) {
        clearSelection();
        return;
    }
    const auto index = m_model->index(shown, 0);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                 QItemSelectionModel::Rows);
    scrollTo(index);
}

void TableView::revealRow(int row)
{
    if (m_model->shownRow(row) < 0) {
        setFilter({});
        Q_EMIT filterEnded();
    }
    selectOnlyRow(row);
}

void TableView::focusInEvent(QFocusEvent *event)
{
    QTableView::focusInEvent(event);
    // Users who come with the keyboard see which row Enter and Delete will act on.
    if (selectedRow() < 0 && event->reason() != Qt::MouseFocusReason && currentIndex().isValid()) {
        selectOnlyRow(m_model->sourceRow(currentIndex().row()));
    }
}

void TableView::keyPressEvent(QKeyEvent *event)
{
    m_isKeyPress = true;
    QTableView::keyPressEvent(event);
    m_isKeyPress = false;
}

} // namespace platform
