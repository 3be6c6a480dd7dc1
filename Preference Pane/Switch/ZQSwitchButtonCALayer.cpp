// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ZQSwitchButtonCALayer.h"

#include "Preference Pane/Switch/LayerTransaction.h"

using namespace std::chrono_literals;
using platform::LayerAttribute;
using platform::LayerTransaction;

namespace {

// The left and the bottom edge belong to a rectangle, the right and the top edge do not.
bool contains(const QRectF &rectangle, const QPointF &point)
{
    return point.x() >= rectangle.left() && point.x() < rectangle.right() &&
           point.y() >= rectangle.top() && point.y() < rectangle.bottom();
}

} // namespace

ZQSwitchButtonCALayer::ZQSwitchButtonCALayer()
{
    setBounds({0, 0, 20, 20});
    setCornerRadius(5);
    setBorderWidth(0);
    setAutoresizingMask(WidthSizable);
    addConstraint({LayerAttribute::MinX, LayerAttribute::MinX});
    addConstraint({LayerAttribute::MinY, LayerAttribute::MinY});
    addConstraint({LayerAttribute::Width, LayerAttribute::Width});
    addConstraint({LayerAttribute::Height, LayerAttribute::Height});
    setLayoutManager(LayoutManager::Constraints);
    setEnabled(true);
    createtheSwitch();
    m_currentEventState = EventState::Idle;
}

ZQSwitchButtonCALayer::~ZQSwitchButtonCALayer() = default;

void ZQSwitchButtonCALayer::mouseDown(const QPointF &point)
{
    const bool onKnob = contains(m_theSwitch->frame(), point);
    m_currentEventState = onKnob ? EventState::PressedKnob : EventState::PressedBeside;
    if (onKnob) {
        showFace(m_enabled ? Face::Pressed : Face::Disabled);
    }
    m_mouseDownPointForCurrentEvent = point;
}

void ZQSwitchButtonCALayer::mouseDragged(const QPointF &point)
{
    if (m_currentEventState == EventState::PressedKnob ||
        m_currentEventState == EventState::Dragging) {
        m_currentEventState = EventState::Dragging;
        moveSwitch(point);
    }
}

void ZQSwitchButtonCALayer::mouseUp(const QPointF & /*point*/)
{
    switchSide();
    showFace(m_enabled ? Face::Normal : Face::Disabled);
    Q_EMIT onChanged(m_on);
}

void ZQSwitchButtonCALayer::cancelPress()
{
    if (m_currentEventState == EventState::Idle) {
        return;
    }
    const bool dragged = m_currentEventState == EventState::Dragging;
    m_currentEventState = EventState::Idle;
    showFace(m_enabled ? Face::Normal : Face::Disabled);
    if (dragged) {
        placeKnob(m_on ? onEnd() : 0);
    }
}

void ZQSwitchButtonCALayer::moveSwitch(const QPointF &point)
{
    if (isHidden()) {
        return;
    }
    const qreal dx = point.x() - m_mouseDownPointForCurrentEvent.x();
    if (!shouldDrag(dx)) {
        return;
    }
    {
        const LayerTransaction withoutAnimation(0ms);
        placeKnob(qMin(qMax(m_theSwitch->frame().x() + dx, 0.0), onEnd()));
    }
    m_mouseDownPointForCurrentEvent = point;
}

bool ZQSwitchButtonCALayer::shouldDrag(qreal dx) const
{
    const qreal x = m_theSwitch->frame().x();
    return m_enabled && !(dx < 0 && x <= 0) && !(dx > 0 && x >= onEnd());
}

void ZQSwitchButtonCALayer::switchSide()
{
    if (!m_enabled) {
        return;
    }
    const QRectF knob = m_theSwitch->frame();
    if (m_currentEventState == EventState::Dragging) {
        setOn(frame().width() / 2 < knob.x() + knob.width() / 2);
    } else {
        // A click toggles wherever it lands; after setOn: this is the value that was just set.
        setOn(knob.x() == 0);
    }
    placeKnob(m_on ? onEnd() : 0);
    m_currentEventState = EventState::Idle;
}

void ZQSwitchButtonCALayer::setOn(bool on)
{
    if (on != m_on) {
        m_on = on;
        // Sets the value again: it is the same then, so this ends after at most two rounds.
        switchSide();
    }
    Q_EMIT onChanged(m_on);
}

void ZQSwitchButtonCALayer::setOn(bool on, Animated animated)
{
    if (animated == Animated::Yes) {
        setOn(on);
        return;
    }
    const LayerTransaction withoutAnimation(0ms);
    setOn(on);
}

void ZQSwitchButtonCALayer::setEnabled(bool enabled)
{
    m_enabled = enabled;
    showFace(enabled ? Face::Pressed : Face::Disabled);
}

qreal ZQSwitchButtonCALayer::onEnd() const
{
    return frame().width() - m_theSwitch->frame().width();
}

void ZQSwitchButtonCALayer::placeKnob(qreal x)
{
    QRectF knob = m_theSwitch->frame();
    knob.moveLeft(x);
    m_theSwitch->setFrame(knob);
}
