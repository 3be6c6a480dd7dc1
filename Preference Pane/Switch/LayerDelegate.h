// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

class QPainter;

namespace platform {

class Layer;

// Draws the content of a layer.
class LayerDelegate {
public:
    virtual ~LayerDelegate() = default;

    /// drawLayer:inContext:
    // The painter has Qt's axes: the origin at the layer's top left corner, y downward.
    virtual void drawLayer(const Layer &layer, QPainter &painter) = 0;
};

// The view that shows a tree of layers.
class LayerHost {
public:
    virtual ~LayerHost() = default;

    virtual void layerTreeChanged() = 0;

    // The length of implicit animations; 0 where nothing can be seen moving.
    virtual std::chrono::milliseconds implicitAnimationDuration() const = 0;
};

} // namespace platform
