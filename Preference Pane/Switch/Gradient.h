// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QVariant>

#include <optional>

class QPainter;
class QPainterPath;

namespace platform {

// The calibrated grey of a white level from 0 (black) to 1 (white), as the nearest of sRGB's 256.
QColor calibratedWhite(qreal white);

// NSGradient: a linear change from one colour to another.
class Gradient {
public:
    Gradient(QColor startingColor, QColor endingColor)
        : m_startingColor(std::move(startingColor)), m_endingColor(std::move(endingColor))
    {
    }

    QColor startingColor() const { return m_startingColor; }
    QColor endingColor() const { return m_endingColor; }

    /// drawInBezierPath:angle:
    // The angle is in degrees, counted anticlockwise from the right as one looks at it: at 90 the
    // starting colour is at the bottom of the path and the ending colour at its top.
    void drawInPath(QPainter &painter, const QPainterPath &path, qreal angle) const;

    // For a keyed archive. What is not a gradient reads as none.
    QVariant toVariant() const;
    static std::optional<Gradient> fromVariant(const QVariant &value);

    bool operator==(const Gradient &) const = default;

private:
    QColor m_startingColor;
    QColor m_endingColor;
};

} // namespace platform
