// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Pane/EmbossedLabel.h"

#include <QPainter>

void EmbossedLabel::setBackgroundStyle(BackgroundStyle style)
{
    m_style = style;
    update();
}

void EmbossedLabel::paintEvent(QPaintEvent *event)
{
    if (m_style == BackgroundStyle::Raised && isEnabled()) {
        // Light falls from above: a bright lower edge on light backgrounds, a dark upper edge on
        // dark.
        const bool dark = palette().color(QPalette::Window).lightness() < 128;
        QColor edge(dark ? Qt::black : Qt::white);
        edge.setAlpha(dark ? 153 : 204); // 0.6, 0.8
        QPainter painter(this);
        painter.setPen(edge);
        painter.drawText(contentsRect().translated(0, dark ? -1 : 1), static_cast<int>(alignment()),
                         text());
    }
    QLabel::paintEvent(event);
}
