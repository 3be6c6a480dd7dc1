// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Tables/NoteDelegate.h"

#include "Platform/Desktop/Tables/TableModel.h"

#include <QApplication>
#include <QPainter>

#include <algorithm>

namespace platform {

void NoteDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                         const QModelIndex &index) const
{
    const QString note = index.data(TableModel::NoteRole).toString();
    if (note.isEmpty()) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    const QStyle *style = item.widget != nullptr ? item.widget->style() : QApplication::style();
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, &item, item.widget) + 1;
    const int line = item.rect.width() - 4 * margin;
    const int icon = item.icon.isNull() ? 0 : item.decorationSize.width() + 2 * margin;
    const int width = std::min(item.fontMetrics.horizontalAdvance(note) + 1, line / 2);
    // The style cuts a text that is too long for the line, not for the place beside the note.
    item.text = item.fontMetrics.elidedText(item.text, item.textElideMode,
                                            line - icon - width - 2 * margin);
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);

    const bool isSelected = item.state.testFlag(QStyle::State_Selected);
    const bool isActive = item.state.testFlag(QStyle::State_Active);
    auto colour = item.palette.color(isActive ? QPalette::Active : QPalette::Inactive,
                                     isSelected ? QPalette::HighlightedText : QPalette::Text);
    constexpr int dimmed = 180; // opacity, of 255
    colour.setAlpha(isSelected ? 255 : dimmed);
    const QRect place = QStyle::alignedRect(item.direction, Qt::AlignRight | Qt::AlignVCenter,
                                            {width, item.rect.height()},
                                            item.rect.adjusted(2 * margin, 0, -2 * margin, 0));
    painter->save();
    painter->setFont(item.font);
    painter->setPen(colour);
    painter->drawText(place, static_cast<int>(Qt::AlignCenter) | Qt::TextSingleLine,
                      item.fontMetrics.elidedText(note, Qt::ElideRight, width));
    painter->restore();
}

} // namespace platform
