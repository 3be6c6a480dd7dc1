// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/Tables/TableView.h"

// The table of presets: files are dropped on it to be imported, and a preset is dragged out of it
// as its file.
class PresetTableView : public platform::TableView {
    Q_OBJECT
public:
    explicit PresetTableView(QWidget *parent = nullptr);

    // The file of the selected row, for a drag; null for none.
    void setFileOfSelectedRow(std::function<QString()> file) { m_file = std::move(file); }

Q_SIGNALS:
    void filesDropped(const QStringList &paths);
    void removeRequested();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void startDrag(Qt::DropActions actions) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    std::function<QString()> m_file;
};
