// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "XPointer.h"

#include <QEnterEvent>
#include <QMouseEvent>
#include <QProcess>
#include <QTest>

namespace {

constexpr int Patience = 20000; // milliseconds

// The part of a point that no pixel is smaller than, at any scale used.
constexpr qreal SamePlace = 0.25;

template <typename PointerEvent>
QPointF screenPosition(const PointerEvent &event)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    return event.globalPosition();
#else
    return event.screenPos();
#endif
}

} // namespace

XPointer::XPointer(QWidget &widget) : m_widget(widget)
{
    m_widget.setMouseTracking(true);
    m_widget.installEventFilter(this);
    // A corner that no test uses: the widget hears only of moves from elsewhere.
    xdotool({QStringLiteral("mousemove"), QStringLiteral("1279"), QStringLiteral("1023")});
}

bool XPointer::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        ++m_presses;
        break;
    case QEvent::MouseButtonRelease:
        ++m_releases;
        break;
    case QEvent::MouseMove:
        m_position = screenPosition(*static_cast<QMouseEvent *>(event));
        break;
    case QEvent::Enter:
        // A jump into the window is no movement within it.
        m_position = screenPosition(*static_cast<QEnterEvent *>(event));
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

bool XPointer::xdotool(const QStringList &arguments) const
{
    return QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
}

QPointF XPointer::onScreen(const QPointF &point) const
{
    return m_widget.mapToGlobal(QPoint(0, 0)) + point;
}

QStringList XPointer::placeOf(const QPointF &point) const
{
    const QPointF pixel = onScreen(point) * m_widget.devicePixelRatioF();
    return {QString::number(qRound(pixel.x())), QString::number(qRound(pixel.y()))};
}

bool XPointer::moveTo(const QPointF &point)
{
    const auto isThere = [&] {
        return (m_position - onScreen(point)).manhattanLength() < SamePlace;
    };
    return xdotool(QStringList{QStringLiteral("mousemove")} + placeOf(point)) &&
           QTest::qWaitFor(isThere, Patience);
}

bool XPointer::press(int button)
{
    const int before = m_presses;
    return xdotool({QStringLiteral("mousedown"), QString::number(button)}) &&
           QTest::qWaitFor([&] { return m_presses > before; }, Patience);
}

bool XPointer::release(int button)
{
    const int before = m_releases;
    return xdotool({QStringLiteral("mouseup"), QString::number(button)}) &&
           QTest::qWaitFor([&] { return m_releases > before; }, Patience);
}

bool XPointer::click(const QPointF &point, int times)
{
    const int wanted = m_releases + times;
    return xdotool(QStringList{QStringLiteral("mousemove")} + placeOf(point) +
                   QStringList{QStringLiteral("click"), QStringLiteral("--repeat"),
                               QString::number(times), QStringLiteral("1")}) &&
           QTest::qWaitFor([&] { return m_releases >= wanted; }, Patience);
}
