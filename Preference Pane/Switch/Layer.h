// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Preference Pane/Switch/LayerConstraint.h"
#include "Preference Pane/Switch/LayerDelegate.h"

#include <QFlags>
#include <QImage>
#include <QRectF>
#include <QString>

#include <memory>
#include <vector>

class QPainter;
class QVariantAnimation;

namespace platform {

// CALayer: a rectangle with content, sublayers and a border. Lengths are in points and the y axis
// points upward, so that the top() of a QRectF is here its bottom edge. A change of the frame takes
// effect at once for whoever asks; what the view shows slides there. Main thread only.
class Layer {
public:
    enum class LayoutManager { None, Constraints };
    enum AutoresizingFlag { NotSizable = 0, WidthSizable = 2, HeightSizable = 16 };
    Q_DECLARE_FLAGS(AutoresizingMask, AutoresizingFlag)

    Layer();
    virtual ~Layer();
    Layer(const Layer &) = delete;
    Layer &operator=(const Layer &) = delete;

    QString name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

    // Where the layer is in its superlayer; follows from bounds, position and anchor point.
    QRectF frame() const { return frameOf(m_geometry); }
    void setFrame(const QRectF &frame);
    QRectF bounds() const { return m_geometry.bounds; }
    void setBounds(const QRectF &bounds);
    // Where the anchor point is in the superlayer.
    QPointF position() const { return m_geometry.position; }
    void setPosition(const QPointF &position);
    // In fractions of the bounds; (0.5, 0.5) is the centre.
    QPointF anchorPoint() const { return m_geometry.anchorPoint; }
    void setAnchorPoint(const QPointF &anchorPoint);

    // Where the layer is shown at this moment.
    QRectF presentationFrame() const;
    // Ends the animations of the layer and its sublayers where they lead.
    void finishAnimations();

    bool isHidden() const { return m_hidden; }
    void setHidden(bool hidden);
    qreal cornerRadius() const { return m_cornerRadius; }
    void setCornerRadius(qreal radius);
    // A black line inside the edge of the bounds.
    qreal borderWidth() const { return m_borderWidth; }
    void setBorderWidth(qreal width);
    QImage contents() const { return m_contents; }
    // An image that fills the bounds.
    void setContents(const QImage &contents);
    // Pixels per point of the screen, for whoever makes contents; set by the view for the tree.
    qreal contentsScale() const { return m_contentsScale; }
    virtual void setContentsScale(qreal scale);

    // The delegate must outlive the layer or be taken back.
    LayerDelegate *delegate() const { return m_delegate; }
    void setDelegate(LayerDelegate *delegate) { m_delegate = delegate; }
    // From then on the delegate draws the layer's content, anew at each painting, so that it is
    // sharp at every scale.
    void setNeedsDisplay();

    Layer *superlayer() const { return m_superlayer; }
    const std::vector<std::shared_ptr<Layer>> &sublayers() const { return m_sublayers; }
    void addSublayer(const std::shared_ptr<Layer> &layer);

    // How the layer follows changes of its superlayer's size.
    AutoresizingMask autoresizingMask() const { return m_autoresizingMask; }
    void setAutoresizingMask(AutoresizingMask mask) { m_autoresizingMask = mask; }
    void addConstraint(LayerConstraint constraint) { m_constraints.push_back(constraint); }
    void setLayoutManager(LayoutManager manager) { m_layoutManager = manager; }
    // With LayoutManager::Constraints, brings the sublayers to where their constraints want them.
    // Runs at each change of the size.
    virtual void layoutSublayers();

    // Given to the layer at the root of the tree; must outlive it or be taken back.
    void setHost(LayerHost *host) { m_host = host; }

    // Paints the layer and its sublayers as they are shown at this moment. The layer fills area,
    // which is in the painter's coordinates (y downward).
    void paint(QPainter &painter, const QRectF &area) const;

private:
    struct Geometry {
        QRectF bounds;
        QPointF position;
        QPointF anchorPoint{0.5, 0.5};
    };

    static QRectF frameOf(const Geometry &geometry);
    void setGeometry(const Geometry &geometry);
    void slideFrom(const QRectF &shown);
    void resizeWithOldSuperlayerSize(const QSizeF &oldSize);
    LayerHost *host() const;
    void requestPaint() const;
    void paintContent(QPainter &painter, const QRectF &area) const;
    void paintBorder(QPainter &painter, const QRectF &area) const;

    QString m_name;
    Geometry m_geometry;
    std::unique_ptr<QVariantAnimation> m_slide;
    bool m_hidden = false;
    bool m_needsDisplay = false;
    qreal m_cornerRadius = 0;
    qreal m_borderWidth = 0;
    qreal m_contentsScale = 1;
    QImage m_contents;
    LayerDelegate *m_delegate = nullptr;
    LayerHost *m_host = nullptr;
    Layer *m_superlayer = nullptr;
    std::vector<std::shared_ptr<Layer>> m_sublayers;
    AutoresizingMask m_autoresizingMask = NotSizable;
    std::vector<LayerConstraint> m_constraints;
    LayoutManager m_layoutManager = LayoutManager::None;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(Layer::AutoresizingMask)

} // namespace platform
