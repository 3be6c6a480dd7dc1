// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ZQSwitch.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include <cmath>
#include <limits>

namespace {

const Qt::KeyboardModifiers shortcutModifiers =
    Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;

// In points from the widget's top left corner.
QPointF pointInWidget(const QMouseEvent &event)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    return event.position();
#else
    // The point of a child is rounded to whole ones, half a point upward. That of the window is
    // not, and lies a whole number of points away.
    const auto lost = [](qreal inWindow, qreal inChild) {
        const qreal away = inWindow - inChild;
        return away - std::floor(away + 0.5);
    };
    const QPointF point = event.localPos();
    const QPointF window = event.windowPos();
    return {point.x() + lost(window.x(), point.x()), point.y() + lost(window.y(), point.y())};
#endif
}

} // namespace

void ZQSwitch::mouseDown(const QMouseEvent &event)
{
    if (m_clicks.clickCount() <= 1) {
        buttonLayer()->mouseDown(pointForEvent(event));
    }
}

// Also those of a double-click's second press, which the knob layer then ignores by itself.
void ZQSwitch::mouseDragged(const QMouseEvent &event)
{
    buttonLayer()->mouseDragged(pointForEvent(event));
}

void ZQSwitch::mouseUp(const QMouseEvent &event)
{
    if (m_clicks.clickCount() <= 1) {
        buttonLayer()->mouseUp(pointForEvent(event));
    }
}

/// pointForEvent:
QPointF ZQSwitch::pointForEvent(const QMouseEvent &event) const
{
    const QPointF point = pointInWidget(event);
    // An event names the upper edge of its pixel. The point lies inside the pixel, just below that
    // edge: the topmost row of the view would otherwise be outside the knob.
    const qreal below = -std::numeric_limits<qreal>::infinity();
    return {point.x(), std::nextafter(height() - point.y(), below)};
}

void ZQSwitch::performClick()
{
    if (!isEnabled()) {
        return;
    }
    breakOffPress();
    const auto layer = buttonLayer();
    const QPointF centre = layer->theSwitch()->frame().center();
    layer->mouseDown(centre);
    layer->mouseUp(centre);
}

// What began the press is gone or may never end it: nothing is toggled.
void ZQSwitch::breakOffPress()
{
    if (m_press != Press::None) {
        m_brokenOff = m_press == Press::Mouse;
        m_press = Press::None;
        buttonLayer()->cancelPress();
    }
}

bool ZQSwitch::event(QEvent *event)
{
    if (event->type() == QEvent::WindowDeactivate) {
        breakOffPress();
    }
    if (isEnabled()) {
        return LayerView::event(event);
    }
    // QWidget takes no mouse events while disabled.
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        mousePressEvent(static_cast<QMouseEvent *>(event));
        break;
    case QEvent::MouseMove:
        mouseMoveEvent(static_cast<QMouseEvent *>(event));
        break;
    case QEvent::MouseButtonRelease:
        mouseReleaseEvent(static_cast<QMouseEvent *>(event));
        break;
    case QEvent::MouseButtonDblClick:
        mouseDoubleClickEvent(static_cast<QMouseEvent *>(event));
        break;
    default:
        return LayerView::event(event);
    }
    return true;
}

void ZQSwitch::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    breakOffPress();
    m_brokenOff = false;
    m_press = Press::Mouse;
    m_clicks.press(*event);
    mouseDown(*event);
}

void ZQSwitch::mouseDoubleClickEvent(QMouseEvent *event)
{
    mousePressEvent(event);
}

void ZQSwitch::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons().testFlag(Qt::LeftButton) && !m_brokenOff) {
        mouseDragged(*event);
    }
}

void ZQSwitch::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    if (m_press == Press::Mouse) {
        m_press = Press::None;
    }
    if (!m_brokenOff) {
        mouseUp(*event);
    }
}

void ZQSwitch::hideEvent(QHideEvent *event)
{
    breakOffPress();
    LayerView::hideEvent(event);
}

void ZQSwitch::keyPressEvent(QKeyEvent *event)
{
    const bool space = event->key() == Qt::Key_Space || event->key() == Qt::Key_Select;
    if (event->key() == Qt::Key_Escape && m_press == Press::Key) {
        breakOffPress();
    } else if (!space || (event->modifiers() & shortcutModifiers) != 0) {
        LayerView::keyPressEvent(event);
    } else if (!event->isAutoRepeat() && m_press == Press::None) {
        m_press = Press::Key;
        m_showsFocus = true;
        const auto layer = buttonLayer();
        layer->mouseDown(layer->theSwitch()->frame().center());
        update();
    }
}

void ZQSwitch::keyReleaseEvent(QKeyEvent *event)
{
    const bool space = event->key() == Qt::Key_Space || event->key() == Qt::Key_Select;
    if (!space) {
        LayerView::keyReleaseEvent(event);
    } else if (!event->isAutoRepeat() && m_press == Press::Key) {
        m_press = Press::None;
        const auto layer = buttonLayer();
        layer->mouseUp(layer->theSwitch()->frame().center());
    }
}

void ZQSwitch::focusInEvent(QFocusEvent *event)
{
    // The mouse shows where it clicks; the other ways of getting here do not.
    if (event->reason() == Qt::MouseFocusReason) {
        m_showsFocus = false;
    } else if (event->reason() != Qt::ActiveWindowFocusReason &&
               event->reason() != Qt::PopupFocusReason) {
        m_showsFocus = true;
    }
    LayerView::focusInEvent(event);
}

void ZQSwitch::focusOutEvent(QFocusEvent *event)
{
    if (m_press == Press::Key) {
        breakOffPress();
    }
    LayerView::focusOutEvent(event);
}
