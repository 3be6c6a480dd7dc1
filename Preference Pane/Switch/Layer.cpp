// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/Layer.h"

#include "Preference Pane/Switch/LayerTransaction.h"

#include <QEasingCurve>
#include <QVariantAnimation>

namespace platform {
namespace {

// Starts briskly and settles softly.
QEasingCurve implicitTiming()
{
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment({0.25, 0.1}, {0.25, 1.0}, {1.0, 1.0});
    return curve;
}

struct Accessors {
    qreal (QRectF::*value)() const;
    void (QRectF::*setValue)(qreal value);
};

Accessors accessorsOf(LayerAttribute attribute)
{
    switch (attribute) {
    case LayerAttribute::MinX:
        return {&QRectF::x, &QRectF::moveLeft};
    case LayerAttribute::MinY:
        return {&QRectF::y, &QRectF::moveTop};
    case LayerAttribute::Width:
        return {&QRectF::width, &QRectF::setWidth};
    case LayerAttribute::Height:
        break;
    }
    return {&QRectF::height, &QRectF::setHeight};
}

} // namespace

Layer::Layer() = default;

Layer::~Layer()
{
    // A sublayer may be kept by others.
    for (const auto &sublayer : m_sublayers) {
        sublayer->m_superlayer = nullptr;
    }
}

QRectF Layer::frameOf(const Geometry &geometry)
{
    const QSizeF size = geometry.bounds.size();
    const QPointF anchor(geometry.anchorPoint.x() * size.width(),
                         geometry.anchorPoint.y() * size.height());
    return {geometry.position - anchor, size};
}

void Layer::setFrame(const QRectF &frame)
{
    const QPointF anchor(m_geometry.anchorPoint.x() * frame.width(),
                         m_geometry.anchorPoint.y() * frame.height());
    setGeometry({{m_geometry.bounds.topLeft(), frame.size()},
                 frame.topLeft() + anchor,
                 m_geometry.anchorPoint});
}

void Layer::setBounds(const QRectF &bounds)
{
    setGeometry({bounds, m_geometry.position, m_geometry.anchorPoint});
}

void Layer::setPosition(const QPointF &position)
{
    setGeometry({m_geometry.bounds, position, m_geometry.anchorPoint});
}

void Layer::setAnchorPoint(const QPointF &anchorPoint)
{
    setGeometry({m_geometry.bounds, m_geometry.position, anchorPoint});
}

void Layer::setGeometry(const Geometry &geometry)
{
    const QRectF shown = presentationFrame();
    const QRectF oldFrame = frame();
    m_geometry = geometry;
    if (frame() != oldFrame) {
        slideFrom(shown);
    }
    if (frame().size() != oldFrame.size()) {
        for (const auto &sublayer : m_sublayers) {
            sublayer->resizeWithOldSuperlayerSize(oldFrame.size());
        }
        layoutSublayers();
    }
    requestPaint();
}

void Layer::slideFrom(const QRectF &shown)
{
    m_slide.reset();
    const LayerHost *view = host();
    const auto usual =
        view != nullptr ? view->implicitAnimationDuration() : std::chrono::milliseconds(0);
    const auto duration = LayerTransaction::animationDuration().value_or(usual);
    if (usual.count() <= 0 || duration.count() <= 0) {
        return;
    }
    m_slide = std::make_unique<QVariantAnimation>();
    m_slide->setStartValue(shown);
    m_slide->setEndValue(frame());
    m_slide->setDuration(static_cast<int>(duration.count()));
    m_slide->setEasingCurve(implicitTiming());
    QObject::connect(m_slide.get(), &QVariantAnimation::valueChanged, [this] { requestPaint(); });
    m_slide->start();
}

QRectF Layer::presentationFrame() const
{
    const bool slides = m_slide && m_slide->state() == QAbstractAnimation::Running;
    return slides ? m_slide->currentValue().toRectF() : frame();
}

void Layer::finishAnimations()
{
    m_slide.reset();
    for (const auto &sublayer : m_sublayers) {
        sublayer->finishAnimations();
    }
    requestPaint();
}

void Layer::setHidden(bool hidden)
{
    m_hidden = hidden;
    requestPaint();
}

void Layer::setCornerRadius(qreal radius)
{
    m_cornerRadius = radius;
    requestPaint();
}

void Layer::setBorderWidth(qreal width)
{
    m_borderWidth = width;
    requestPaint();
}

void Layer::setContents(const QImage &contents)
{
    m_contents = contents;
    requestPaint();
}

void Layer::setContentsScale(qreal scale)
{
    m_contentsScale = scale;
    for (const auto &sublayer : m_sublayers) {
        sublayer->setContentsScale(scale);
    }
}

void Layer::setNeedsDisplay()
{
    m_needsDisplay = true;
    requestPaint();
}

void Layer::addSublayer(const std::shared_ptr<Layer> &layer)
{
    layer->m_superlayer = this;
    m_sublayers.push_back(layer);
    layer->setContentsScale(m_contentsScale);
    requestPaint();
}

void Layer::resizeWithOldSuperlayerSize(const QSizeF &oldSize)
{
    const QSizeF growth = m_superlayer->frame().size() - oldSize;
    QRectF resized = frame();
    if (m_autoresizingMask.testFlag(WidthSizable)) {
        resized.setWidth(resized.width() + growth.width());
    }
    if (m_autoresizingMask.testFlag(HeightSizable)) {
        resized.setHeight(resized.height() + growth.height());
    }
    setFrame(resized);
}

void Layer::layoutSublayers()
{
    if (m_layoutManager != LayoutManager::Constraints) {
        return;
    }
    for (const auto &sublayer : m_sublayers) {
        QRectF placed = sublayer->frame();
        for (const auto &constraint : sublayer->m_constraints) {
            const auto value = accessorsOf(constraint.superlayerAttribute).value;
            (placed.*accessorsOf(constraint.attribute).setValue)((m_geometry.bounds.*value)());
        }
        sublayer->setFrame(placed);
    }
}

LayerHost *Layer::host() const
{
    const Layer *root = this;
    while (root->m_superlayer != nullptr) {
        root = root->m_superlayer;
    }
    return root->m_host;
}

void Layer::requestPaint() const
{
    if (LayerHost *view = host()) {
        view->layerTreeChanged();
    }
}

} // namespace platform
