// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/PropertyLists/KeyedArchive.h"
#include "Preference Pane/Switch/Layer.h"

#include <QWidget>

namespace platform {

// NSView with a backing layer: a widget that shows a tree of layers and draws the content of the
// layer at its root. Nothing slides while the view is not shown or where the desktop has its
// animations turned off.
class LayerView : public QWidget, public LayerDelegate, private LayerHost {
    Q_OBJECT
public:
    explicit LayerView(QWidget *parent = nullptr) : QWidget(parent) {}
    ~LayerView() override;

    /// initWithCoder:
    // With the archived geometry, where there is one.
    explicit LayerView(const KeyedArchive &coder, QWidget *parent = nullptr);
    /// encodeWithCoder:
    virtual void encodeWithCoder(KeyedArchive &coder) const;

    const std::shared_ptr<Layer> &layer() const { return m_layer; }
    // The view becomes the layer's delegate, and the layer follows the view's size.
    void setLayer(const std::shared_ptr<Layer> &layer);

    /// drawRect:
    // Draws the content of the view's layer. The painter has Qt's axes.
    virtual void drawRect(QPainter &painter, const QRectF &rect);

    void drawLayer(const Layer &layer, QPainter &painter) override;

protected:
    // A view that is not shown yet is told of its size late; this makes the layer follow at once.
    void matchLayerToView();

    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void layerTreeChanged() override;
    std::chrono::milliseconds implicitAnimationDuration() const override;

    std::shared_ptr<Layer> m_layer;
};

} // namespace platform
