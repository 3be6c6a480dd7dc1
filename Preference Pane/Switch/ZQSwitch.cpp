// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ZQSwitch.h"

#include "Preference Pane/Switch/ZQSwitchAccessibility.h"

#include <QAccessible>
#include <QEvent>

using platform::Layer;

namespace {

const auto GradientKey = QStringLiteral("bgGradient");

} // namespace

ZQSwitch::ZQSwitch(QWidget *parent) : LayerView(parent)
{
    resize(sizeHint());
    awakeFromNib();
}

ZQSwitch::ZQSwitch(const platform::KeyedArchive &coder, QWidget *parent) : LayerView(coder, parent)
{
    setGradient(platform::Gradient::fromVariant(coder.decodeObject(GradientKey)));
    awakeFromNib();
}

ZQSwitch::~ZQSwitch() = default;

void ZQSwitch::encodeWithCoder(platform::KeyedArchive &coder) const
{
    LayerView::encodeWithCoder(coder);
    if (m_bgGradient) {
        coder.encodeObject(m_bgGradient->toVariant(), GradientKey);
    }
}

/// awakeFromNib
void ZQSwitch::awakeFromNib()
{
    installSwitchAccessibility();
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setupLayers();
    if (!isEnabled()) {
        m_buttonLayer->setEnabled(false);
    }
}

/// setupLayers
void ZQSwitch::setupLayers()
{
    m_mainLayer = std::make_shared<Layer>();
    m_mainLayer->setName(QStringLiteral("mainLayer"));
    m_mainLayer->setFrame({QPointF(0, 0), QSizeF(size())});
    setLayer(m_mainLayer);

    const auto container = std::make_shared<Layer>();
    container->setName(QStringLiteral("contentContainer"));
    container->setBounds(m_mainLayer->bounds());
    container->setDelegate(this);
    container->setAnchorPoint({0.5, 0.5});
    container->setPosition(m_mainLayer->bounds().center());
    container->setAutoresizingMask(Layer::WidthSizable | Layer::HeightSizable);
    container->setLayoutManager(Layer::LayoutManager::Constraints);
    m_mainLayer->addSublayer(container);

    m_buttonLayer = std::make_shared<ZQSwitchButtonCALayer>();
    m_buttonLayer->setName(QStringLiteral("switchLayer"));
    container->addSublayer(m_buttonLayer);
    container->layoutSublayers();

    // bind:toObject:withKeyPath:options: of "on" to the knob layer's "on".
    connect(m_buttonLayer.get(), &ZQSwitchButtonCALayer::onChanged, this,
            [this](bool on) { setOn(on); });
}

// Whoever calls the layer keeps it: an observer may delete the switch meanwhile.
std::shared_ptr<ZQSwitchButtonCALayer> ZQSwitch::buttonLayer()
{
    matchLayerToView();
    return m_buttonLayer;
}

void ZQSwitch::storeOn(bool on)
{
    m_on = on;
    QAccessible::State changed;
    changed.checked = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

void ZQSwitch::setOn(bool on)
{
    const QPointer<ZQSwitch> self(this);
    if (on != m_on) {
        storeOn(on);
        buttonLayer()->setOn(on);
    }
    if (self) {
        Q_EMIT onChanged(m_on);
    }
}

void ZQSwitch::setOn(bool on, Animated animated)
{
    if (on != m_on) {
        storeOn(on);
        buttonLayer()->setOn(on, animated);
    }
}

void ZQSwitch::setEnabled(bool enabled)
{
    const bool before = isEnabled();
    const bool focused = window()->focusWidget() == this;
    const auto reason = m_showsFocus ? Qt::OtherFocusReason : Qt::MouseFocusReason;
    QWidget::setEnabled(enabled);
    if (isEnabled() == before) {
        m_buttonLayer->setEnabled(before);
    } else if (before) {
        m_lostFocus.reset();
        if (focused) {
            m_lostFocus = reason;
            m_focusedMeanwhile = window()->focusWidget();
        }
    } else if (m_lostFocus) {
        // The pane disables its switch for as long as a start or stop takes. Who toggles it from
        // the keyboard finds the focus where it was, unless it has been moved since.
        if (window()->focusWidget() == m_focusedMeanwhile) {
            setFocus(*m_lostFocus);
        }
        m_lostFocus.reset();
    }
}

void ZQSwitch::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::EnabledChange) {
        m_buttonLayer->setEnabled(isEnabled());
    }
    LayerView::changeEvent(event);
}
