// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Preference Pane/Switch/ZQSwitchButtonCALayer.h"

// A view that lets layers slide for the usual quarter of a second.
class SlidingHost final : public platform::LayerHost {
public:
    void layerTreeChanged() override {}
    std::chrono::milliseconds implicitAnimationDuration() const override
    {
        return std::chrono::milliseconds(250);
    }
};

// A knob layer of the switch's usual size, and what its tests ask of it.
class KnobLayerFixture : public QObject {
    Q_OBJECT
protected:
    using State = ZQSwitchButtonCALayer::EventState;

    static constexpr qreal Width = 88;
    static constexpr qreal Height = 24;
    static constexpr qreal OnEnd = Width - 40;
    static constexpr QPointF OnKnobWhenOff{20, 12};
    static constexpr QPointF OnKnobWhenOn{60, 12};
    static constexpr QPointF Middle{44, 12};

    void createLayer()
    {
        m_layer = std::make_unique<ZQSwitchButtonCALayer>();
        m_layer->setFrame({0, 0, Width, Height});
    }
    void destroyLayer() { m_layer.reset(); }

    QImage face() const { return m_layer->theSwitch()->contents(); }
    qreal x() const { return m_layer->theSwitch()->frame().x(); }

    // Presses on the knob and drags it until its left edge is at the place; does not release.
    void dragKnobTo(qreal place)
    {
        const QPointF from(x() + 20, 12);
        m_layer->mouseDown(from);
        m_layer->mouseDragged(from + QPointF(place - x(), 0));
    }

    SlidingHost m_host;
    std::unique_ptr<ZQSwitchButtonCALayer> m_layer;
};
