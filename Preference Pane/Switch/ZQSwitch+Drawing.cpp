// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ZQSwitch.h"

#include <QPainter>
#include <QPainterPath>

using platform::calibratedWhite;

const platform::Gradient &ZQSwitch::gradient()
{
    if (!m_bgGradient) {
        m_bgGradient.emplace(calibratedWhite(0.72), calibratedWhite(0.26));
    }
    return *m_bgGradient;
}

void ZQSwitch::setGradient(const std::optional<platform::Gradient> &gradient)
{
    if (gradient != m_bgGradient) {
        m_bgGradient = gradient;
        update();
    }
}

void ZQSwitch::drawRect(QPainter &painter, const QRectF &rect)
{
    coreAnimationDrawRect(painter, rect);
}

void ZQSwitch::coreAnimationDrawRect(QPainter &painter, const QRectF &rect)
{
    if (layer() != m_mainLayer) {
        setLayer(m_mainLayer);
    }
    QPainterPath track;
    track.addRoundedRect(rect, 5, 5);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    gradient().drawInPath(painter, track, 90);
    painter.strokePath(track, QPen(calibratedWhite(0.27), 1));
    painter.restore();
}

void ZQSwitch::paintEvent(QPaintEvent *event)
{
    LayerView::paintEvent(event);
    if (!hasFocus() || !m_showsFocus) {
        return;
    }
    // Two lines, because the highlight alone may not stand out from the greys.
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF edge(rect());
    painter.setPen(QPen(palette().color(QPalette::HighlightedText), 1));
    painter.drawRoundedRect(edge.adjusted(2.5, 2.5, -2.5, -2.5), 3, 3);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawRoundedRect(edge.adjusted(1, 1, -1, -1), 4, 4);
}
