// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStyledItemDelegate>

namespace platform {

// Paints the note of a cell, dimmed, at the end of its line. The note takes at most half of the
// line, and what is left of it the value.
class NoteDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
};

} // namespace platform
