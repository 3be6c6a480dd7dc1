// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Pane/ProgressSpinner.h"

#include <QPainter>

namespace {
constexpr int spokes = 12;
constexpr int stepMilliseconds = 80;
} // namespace

ProgressSpinner::ProgressSpinner(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_timer.setInterval(stepMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_step = (m_step + 1) % spokes;
        update();
    });
}

void ProgressSpinner::startAnimation()
{
    m_animating = true;
    runTimer();
}

void ProgressSpinner::stopAnimation()
{
    m_animating = false;
    runTimer();
}

void ProgressSpinner::runTimer()
{
    if (m_animating && isVisible()) {
        m_timer.start();
    } else {
        m_timer.stop();
    }
    update();
}

QSize ProgressSpinner::sizeHint() const
{
    const int side = fontMetrics().height();
    return {side, side};
}

void ProgressSpinner::paintEvent(QPaintEvent * /*event*/)
{
    if (!m_animating) {
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double radius = qMin(width(), height()) / 2.0;
    painter.translate(width() / 2.0, height() / 2.0);
    QColor colour = palette().color(QPalette::WindowText);
    for (int spoke = 0; spoke < spokes; ++spoke) {
        const int age = (m_step - spoke + spokes) % spokes;
        colour.setAlpha(255 - 217 * age / (spokes - 1));
        painter.save();
        painter.rotate(360.0 * spoke / spokes);
        painter.setPen(QPen(colour, radius / 5, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -radius * 0.5), QPointF(0, -radius * 0.85));
        painter.restore();
    }
}

void ProgressSpinner::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    runTimer();
}

void ProgressSpinner::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_timer.stop();
}
