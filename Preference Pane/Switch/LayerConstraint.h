// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

namespace platform {

// An edge or a length of a layer's frame. The y axis points upward, so MinY is the bottom edge.
enum class LayerAttribute { MinX, MinY, Width, Height };

// CAConstraint, relative to the superlayer: one attribute of the layer's frame is that of the
// superlayer's bounds.
struct LayerConstraint {
    /// constraintWithAttribute:relativeTo:attribute:
    LayerAttribute attribute;
    LayerAttribute superlayerAttribute;
};

} // namespace platform
