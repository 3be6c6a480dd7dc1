// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/Gradient.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QtMath>

namespace platform {

QColor calibratedWhite(qreal white)
{
    const int grey = qRound(qBound(0.0, white, 1.0) * 255);
    return {grey, grey, grey};
}

void Gradient::drawInPath(QPainter &painter, const QPainterPath &path, qreal angle) const
{
    // The two colours lie on the outermost points of the path's rectangle in the angle's direction.
    const QRectF area = path.boundingRect();
    const qreal radians = qDegreesToRadians(angle);
    const QPointF direction(qCos(radians), -qSin(radians));
    const qreal reach =
        (qAbs(direction.x()) * area.width() + qAbs(direction.y()) * area.height()) / 2;
    QLinearGradient fill(area.center() - direction * reach, area.center() + direction * reach);
    fill.setColorAt(0, m_startingColor);
    fill.setColorAt(1, m_endingColor);
    painter.fillPath(path, fill);
}

QVariant Gradient::toVariant() const
{
    return QVariantMap{{QStringLiteral("startingColor"), m_startingColor.name(QColor::HexArgb)},
                       {QStringLiteral("endingColor"), m_endingColor.name(QColor::HexArgb)}};
}

std::optional<Gradient> Gradient::fromVariant(const QVariant &value)
{
    const QVariantMap colors = value.toMap();
    const QColor starting(colors.value(QStringLiteral("startingColor")).toString());
    const QColor ending(colors.value(QStringLiteral("endingColor")).toString());
    if (!starting.isValid() || !ending.isValid()) {
        return std::nullopt;
    }
    return Gradient(starting, ending);
}

} // namespace platform
