// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Preference Pane/Switch/Layer.h"

#include <QObject>

class QPainterPath;

// Whether the knob slides to its new place or is there at once.
enum class Animated { No, Yes };

// The moving part of the on/off switch: fills the switch, holds the sliding knob, turns presses and
// drags into a new value and snaps the knob to the matching end. At x = 0 the knob is off, at the
// layer's width minus its own it is on.
class ZQSwitchButtonCALayer final : public QObject, public platform::Layer {
    Q_OBJECT
    Q_PROPERTY(bool on READ isOn WRITE setOn NOTIFY onChanged)
    Q_PROPERTY(bool enabled READ enabled WRITE setEnabled)
public:
    enum class EventState : qint32 { Idle = 2, PressedBeside = 4, PressedKnob = 8, Dragging = 16 };

    /// init
    ZQSwitchButtonCALayer();
    ~ZQSwitchButtonCALayer() override;

    /// mouseDown:
    // The points of the three are in the coordinates of the view that the layer fills.
    void mouseDown(const QPointF &point);
    /// mouseDragged:
    void mouseDragged(const QPointF &point);
    /// mouseUp:
    // Announces "on" once more, also where the value stays.
    void mouseUp(const QPointF &point);
    // The press that runs ends without a release: nothing is toggled, and a dragged knob goes back.
    void cancelPress();

    bool isOn() const { return m_on; }
    /// setOn:
    // While disabled the value is stored, but the knob does not move.
    void setOn(bool on);
    /// setOn:animated:
    void setOn(bool on, Animated animated);

    bool enabled() const { return m_enabled; }
    /// setEnabled:
    // Enabling shows the pressed face until the next release: users see that the switch is back.
    void setEnabled(bool enabled);

    /// switchSide
    // Decides the value after a release or a change and snaps the knob.
    void switchSide();
    /// shouldDrag:
    // Whether the knob may follow a horizontal movement, in points.
    bool shouldDrag(qreal dx) const;
    /// moveSwitch:
    void moveSwitch(const QPointF &point);

    EventState currentEventState() const { return m_currentEventState; }
    QPointF mouseDownPointForCurrentEvent() const { return m_mouseDownPointForCurrentEvent; }
    // The knob and its faces.
    const std::shared_ptr<platform::Layer> &theSwitch() const { return m_theSwitch; }
    QImage notClickedImgRef() const { return m_notClickedImgRef; }
    QImage clickedImgRef() const { return m_clickedImgRef; }
    QImage disabledImgRef() const { return m_disabledImgRef; }

    void setContentsScale(qreal scale) override;
    // A knob at an end stays at that end when the switch gets wider or narrower.
    void layoutSublayers() override;

Q_SIGNALS:
    // After every setOn:, also one that changes nothing, one inside another, and after each
    // release.
    void onChanged(bool on);

private:
    enum class Face { Normal, Pressed, Disabled };

    void createtheSwitch();
    void createFaces();
    QImage switchImageForPath(const QPainterPath &path, const QColor &topColor,
                              const QColor &bottomColor) const;
    void showFace(Face face);
    void placeKnob(qreal x);
    qreal onEnd() const;

    std::shared_ptr<platform::Layer> m_theSwitch;
    EventState m_currentEventState = EventState::Idle;
    QImage m_notClickedImgRef;
    QImage m_clickedImgRef;
    QImage m_disabledImgRef;
    Face m_face = Face::Normal;
    QPointF m_mouseDownPointForCurrentEvent;
    bool m_on = false;
    bool m_enabled = false;
    qreal m_laidOutWidth = 0;
};
