// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QPoint>

class QMouseEvent;

namespace platform {

// NSEvent's clickCount, which the events of a Linux desktop do not carry: the second press of a
// double-click counts 2, the third of a triple click 3, and so on without end. A press belongs to
// the one before it when it follows within QApplication::doubleClickInterval(), nearer than
// QApplication::startDragDistance().
class ClickCounter {
public:
    // Counts a press (or double-click) of the left button.
    void press(const QMouseEvent &event);

    // The count of the last press, which is also that of its release; 0 before the first.
    int clickCount() const { return m_clickCount; }

private:
    qint64 timeOf(const QMouseEvent &event) const;

    int m_clickCount = 0;
    qint64 m_time = 0;
    QPoint m_globalPosition;
    QElapsedTimer m_clock;
};

} // namespace platform
