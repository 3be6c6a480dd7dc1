// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/LayerView.h"

#include "Preference Pane/Switch/LayerTransaction.h"

#include <QPainter>
#include <QStyle>

using namespace std::chrono_literals;

namespace platform {
namespace {

const auto FrameKey = QStringLiteral("frame");

void forgetDelegate(Layer &layer, const LayerDelegate *delegate)
{
    if (layer.delegate() == delegate) {
        layer.setDelegate(nullptr);
    }
    for (const auto &sublayer : layer.sublayers()) {
        forgetDelegate(*sublayer, delegate);
    }
}

} // namespace

LayerView::LayerView(const KeyedArchive &coder, QWidget *parent) : QWidget(parent)
{
    const QVariantList frame = coder.decodeObject(FrameKey).toList();
    if (frame.size() == 4) {
        setGeometry(frame[0].toInt(), frame[1].toInt(), frame[2].toInt(), frame[3].toInt());
    }
}

LayerView::~LayerView()
{
    if (m_layer) {
        m_layer->setHost(nullptr);
        forgetDelegate(*m_layer, this);
    }
}

void LayerView::encodeWithCoder(KeyedArchive &coder) const
{
    coder.encodeObject(QVariantList{x(), y(), width(), height()}, FrameKey);
}

void LayerView::setLayer(const std::shared_ptr<Layer> &layer)
{
    if (m_layer) {
        m_layer->setHost(nullptr);
    }
    m_layer = layer;
    if (m_layer) {
        m_layer->setHost(this);
        m_layer->setDelegate(this);
        m_layer->setNeedsDisplay();
        matchLayerToView();
    }
    update();
}

void LayerView::matchLayerToView()
{
    const QRectF frame(QPointF(0, 0), QSizeF(size()));
    if (m_layer && m_layer->frame() != frame) {
        const LayerTransaction atOnce(0ms);
        m_layer->setFrame(frame);
    }
}

void LayerView::drawRect(QPainter & /*painter*/, const QRectF & /*rect*/) {}

void LayerView::drawLayer(const Layer &layer, QPainter &painter)
{
    if (&layer == m_layer.get()) {
        drawRect(painter, layer.bounds());
    }
}

void LayerView::paintEvent(QPaintEvent * /*event*/)
{
    if (!m_layer) {
        return;
    }
    matchLayerToView();
    QPainter painter(this);
    // Of what is painted on: a picture of the view may have another scale than its screen.
    const QTransform toPixels = painter.deviceTransform();
    const qreal scale = QLineF(toPixels.map(QPointF(0, 0)), toPixels.map(QPointF(0, 1))).length();
    if (!qFuzzyCompare(scale, m_layer->contentsScale())) {
        m_layer->setContentsScale(scale);
    }
    const auto painted = m_layer; // drawing may give the view another layer
    painted->paint(painter, QRectF(rect()));
}

void LayerView::resizeEvent(QResizeEvent *event)
{
    matchLayerToView();
    QWidget::resizeEvent(event);
}

void LayerView::hideEvent(QHideEvent *event)
{
    if (m_layer) {
        m_layer->finishAnimations();
    }
    QWidget::hideEvent(event);
}

void LayerView::layerTreeChanged()
{
    update();
}

std::chrono::milliseconds LayerView::implicitAnimationDuration() const
{
    const bool moves =
        isVisible() && style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    return moves ? 250ms : 0ms;
}

} // namespace platform
