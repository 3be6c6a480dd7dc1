// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Preference Pane/Switch/ClickCounter.h"
#include "Preference Pane/Switch/Gradient.h"
#include "Preference Pane/Switch/LayerView.h"
#include "Preference Pane/Switch/ZQSwitchButtonCALayer.h"

#include <QPointer>

// The on/off switch: a rounded grey track with a sliding knob, on at the right. It can be placed in
// an interface file as a QWidget of this class. Tab reaches it and Space toggles it; only the left
// mouse button (or touch and pen, as the mouse) moves it. Right-to-left layouts do not mirror it:
// the labels "off" and "on" stand beside fixed sides.
class ZQSwitch final : public platform::LayerView {
    Q_OBJECT
    Q_PROPERTY(bool on READ isOn WRITE setOn NOTIFY onChanged USER true)
    Q_PROPERTY(bool enabled READ enabled WRITE setEnabled)
public:
    explicit ZQSwitch(QWidget *parent = nullptr);
    /// initWithCoder:
    explicit ZQSwitch(const platform::KeyedArchive &coder, QWidget *parent = nullptr);
    ~ZQSwitch() override;

    /// encodeWithCoder:
    void encodeWithCoder(platform::KeyedArchive &coder) const override;

    bool isOn() const { return m_on; }
    /// setOn:animated:
    // Nothing at all happens where the value is the current one. Observers hear of it through the
    // knob's own change.
    void setOn(bool on, Animated animated);

    // Follows the widget's own state, also where that comes from its parent.
    bool enabled() const { return isEnabled(); }

    // The track's fill; none set: white 0.72 at the bottom to white 0.26 at the top.
    const platform::Gradient &gradient();
    /// setGradient:
    void setGradient(const std::optional<platform::Gradient> &gradient);

    // Laid out for the view's present size.
    std::shared_ptr<ZQSwitchButtonCALayer> buttonLayer();
    const std::shared_ptr<platform::Layer> &mainLayer() const { return m_mainLayer; }

    /// drawRect:
    void drawRect(QPainter &painter, const QRectF &rect) override;
    /// coreAnimationDrawRect:
    void coreAnimationDrawRect(QPainter &painter, const QRectF &rect);

    /// mouseDown:
    void mouseDown(const QMouseEvent &event);
    /// mouseDragged:
    void mouseDragged(const QMouseEvent &event);
    /// mouseUp:
    void mouseUp(const QMouseEvent &event);
    /// pointForEvent:
    // In points from the bottom left corner, y upward.
    QPointF pointForEvent(const QMouseEvent &event) const;

    // A click by other means than the mouse; nothing on a disabled switch.
    void performClick();

    QSize sizeHint() const override { return {88, 24}; }
    // The knob and as much way again.
    QSize minimumSizeHint() const override { return {80, 20}; }

public Q_SLOTS:
    /// setOn:
    void setOn(bool on);
    /// setEnabled:
    // Hides QWidget's, because the knob is told even where nothing changes. A disabled switch still
    // hears the mouse: the knob's rules say what a press does then.
    void setEnabled(bool enabled);

Q_SIGNALS:
    // At the end of each setOn:, changed or not: so of every value that the knob announces.
    void onChanged(bool on);

protected:
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    enum class Press { None, Mouse, Key };

    void awakeFromNib();
    void setupLayers();
    void storeOn(bool on);
    void breakOffPress();

    std::optional<platform::Gradient> m_bgGradient;
    std::shared_ptr<ZQSwitchButtonCALayer> m_buttonLayer;
    std::shared_ptr<platform::Layer> m_mainLayer;
    bool m_on = false;
    platform::ClickCounter m_clicks;
    Press m_press = Press::None;
    bool m_brokenOff = false;
    bool m_showsFocus = false;
    // How the focus was got that disabling took away, and who has it since.
    std::optional<Qt::FocusReason> m_lostFocus;
    QPointer<QWidget> m_focusedMeanwhile;
};
