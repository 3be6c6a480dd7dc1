// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/Layer.h"

#include <QPainter>
#include <QPainterPath>

namespace platform {
namespace {

// Contents cover whole pixels of the screen, and as many wherever they are: between pixels, or
// stretched by one, an image would be blurred.
QRectF onWholePixels(const QPainter &painter, const QRectF &area)
{
    const QTransform &toScreen = painter.deviceTransform();
    const QRectF pixels = toScreen.mapRect(area);
    const QPointF topLeft(qRound(pixels.left()), qRound(pixels.top()));
    const QSizeF size(qRound(pixels.width()), qRound(pixels.height()));
    return toScreen.inverted().mapRect(QRectF(topLeft, size));
}

} // namespace

void Layer::paint(QPainter &painter, const QRectF &area) const
{
    if (m_hidden) {
        return;
    }
    paintContent(painter, area);
    for (const auto &sublayer : m_sublayers) {
        // From the y axis upward to the painter's downward one.
        const QRectF shown = sublayer->presentationFrame().translated(-m_geometry.bounds.topLeft());
        sublayer->paint(painter,
                        {area.left() + shown.x(), area.bottom() - shown.y() - shown.height(),
                         shown.width(), shown.height()});
    }
    paintBorder(painter, area);
}

void Layer::paintContent(QPainter &painter, const QRectF &area) const
{
    if (m_needsDisplay && m_delegate != nullptr) {
        painter.save();
        painter.translate(area.topLeft());
        m_delegate->drawLayer(*this, painter);
        painter.restore();
    }
    if (!m_contents.isNull()) {
        painter.save();
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(onWholePixels(painter, area), m_contents);
        painter.restore();
    }
}

void Layer::paintBorder(QPainter &painter, const QRectF &area) const
{
    if (m_borderWidth <= 0) {
        return;
    }
    const QRectF outer = onWholePixels(painter, area);
    const QRectF inner =
        outer.adjusted(m_borderWidth, m_borderWidth, -m_borderWidth, -m_borderWidth);
    const qreal innerRadius = qMax(m_cornerRadius - m_borderWidth, 0.0);
    // The hole runs the other way round: where both outlines cross one pixel their coverages are
    // then subtracted, which the odd-even rule does not do.
    QPainterPath line;
    line.setFillRule(Qt::WindingFill);
    line.addRoundedRect(outer, m_cornerRadius, m_cornerRadius);
    QPainterPath hole;
    hole.addRoundedRect(inner, innerRadius, innerRadius);
    line.addPath(hole.toReversed());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(line, Qt::black);
    painter.restore();
}

} // namespace platform
