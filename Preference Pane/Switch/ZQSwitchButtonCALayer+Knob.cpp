// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/Gradient.h"
#include "Preference Pane/Switch/LayerTransaction.h"
#include "Preference Pane/Switch/ZQSwitchButtonCALayer.h"

#include <QPainter>
#include <QPainterPath>

using namespace std::chrono_literals;
using platform::calibratedWhite;
using platform::LayerAttribute;

void ZQSwitchButtonCALayer::createtheSwitch()
{
    m_theSwitch = std::make_shared<platform::Layer>();
    m_theSwitch->setCornerRadius(5);
    m_theSwitch->setBorderWidth(0.5);
    m_theSwitch->setFrame({0, 0, 2 * bounds().height(), bounds().height()});
    // The horizontal position is free.
    m_theSwitch->addConstraint({LayerAttribute::MinY, LayerAttribute::MinY});
    m_theSwitch->addConstraint({LayerAttribute::Height, LayerAttribute::Height});
    createFaces();
    showFace(m_enabled ? Face::Normal : Face::Disabled);
    addSublayer(m_theSwitch);
    m_laidOutWidth = frame().width();
}

void ZQSwitchButtonCALayer::createFaces()
{
    QPainterPath outline;
    outline.addRoundedRect(m_theSwitch->frame(), 5, 5);
    m_notClickedImgRef =
        switchImageForPath(outline, calibratedWhite(0.9921), calibratedWhite(0.9019));
    m_clickedImgRef = switchImageForPath(outline, calibratedWhite(0.8745), calibratedWhite(0.9568));
    m_disabledImgRef =
        switchImageForPath(outline, calibratedWhite(0.5745), calibratedWhite(0.7568));
}

/// switchImageForPath:topColor:bottomColor:
// The image has the pixels of the screen, so that it need not be scaled there.
QImage ZQSwitchButtonCALayer::switchImageForPath(const QPainterPath &path, const QColor &topColor,
                                                 const QColor &bottomColor) const
{
    const QRectF outline = path.boundingRect();
    QImage image(qMax(qRound(outline.width() * contentsScale()), 1),
                 qMax(qRound(outline.height() * contentsScale()), 1),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    if (outline.isEmpty()) {
        return image;
    }
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(image.width() / outline.width(), image.height() / outline.height());
    painter.translate(-outline.topLeft());
    platform::Gradient(bottomColor, topColor).drawInPath(painter, path, 90);
    return image;
}

void ZQSwitchButtonCALayer::showFace(Face face)
{
    m_face = face;
    if (m_theSwitch) {
        m_theSwitch->setContents(face == Face::Normal    ? m_notClickedImgRef
                                 : face == Face::Pressed ? m_clickedImgRef
                                                         : m_disabledImgRef);
    }
}

void ZQSwitchButtonCALayer::setContentsScale(qreal scale)
{
    Layer::setContentsScale(scale);
    createFaces();
    showFace(m_face);
}

void ZQSwitchButtonCALayer::layoutSublayers()
{
    const QSizeF oldSize = m_theSwitch ? m_theSwitch->frame().size() : QSizeF();
    Layer::layoutSublayers();
    if (!m_theSwitch) {
        return;
    }
    const platform::LayerTransaction withoutAnimation(0ms);
    const qreal x = m_theSwitch->frame().x();
    const qreal oldEnd = m_laidOutWidth - m_theSwitch->frame().width();
    const bool atOnEnd = x == oldEnd && (x != 0 || m_on);
    placeKnob(atOnEnd ? onEnd() : qMin(x, qMax(onEnd(), 0.0)));
    m_laidOutWidth = frame().width();
    if (m_theSwitch->frame().size() != oldSize) {
        createFaces();
        showFace(m_face);
    }
}
