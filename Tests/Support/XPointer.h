// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QPointF>
#include <QWidget>

// The pointer of the X server that the test runs in, moved and pressed through xdotool: the events
// come to the program as those of a real mouse do. Each call returns when the widget has heard of
// it.
class XPointer : public QObject {
    Q_OBJECT
public:
    explicit XPointer(QWidget &widget);

    // The point is the widget's own, and may lie outside of it while the button is pressed; where a
    // point has several pixels it may be a part of one.
    bool moveTo(const QPointF &point);
    bool press(int button = 1);
    bool release(int button = 1);
    // Moves to the point, presses and releases as often as told, without a pause.
    bool click(const QPointF &point, int times = 1);

    // Presses and double-clicks that the widget has heard of.
    int presses() const { return m_presses; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool xdotool(const QStringList &arguments) const;
    QPointF onScreen(const QPointF &point) const;
    QStringList placeOf(const QPointF &point) const;

    QWidget &m_widget;
    QPointF m_position; // of the pointer on the screen, as the widget was last told
    int m_presses = 0;
    int m_releases = 0;
};
