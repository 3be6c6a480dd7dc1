// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ClickCounter.h"

#include <QApplication>
#include <QMouseEvent>

namespace platform {
namespace {

QPoint globalPosition(const QMouseEvent &event)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    return event.globalPosition().toPoint();
#else
    return event.globalPos();
#endif
}

} // namespace

// The display server's time, so that a busy main thread does not pull two presses together or
// apart; an event without one happens now.
qint64 ClickCounter::timeOf(const QMouseEvent &event) const
{
    return event.timestamp() != 0 ? static_cast<qint64>(event.timestamp()) : m_clock.elapsed();
}

void ClickCounter::press(const QMouseEvent &event)
{
    if (!m_clock.isValid()) {
        m_clock.start();
    }
    const qint64 time = timeOf(event);
    const QPoint position = globalPosition(event);
    const qint64 sinceLast = time - m_time;
    const bool follows =
        m_clickCount > 0 && sinceLast >= 0 && sinceLast <= QApplication::doubleClickInterval() &&
        (position - m_globalPosition).manhattanLength() < QApplication::startDragDistance();
    // The first press of a double-click may have gone to another view.
    const int before = event.type() == QEvent::MouseButtonDblClick ? 1 : 0;
    m_clickCount = (follows ? m_clickCount : before) + 1;
    m_time = time;
    m_globalPosition = position;
}

} // namespace platform
