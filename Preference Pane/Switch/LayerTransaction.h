// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <optional>

namespace platform {

// CATransaction: while one is open, changes of layers animate for its duration instead of the
// platform's; 0 makes them at once. It begins with its construction and commits with its
// destruction. Of nested ones the innermost counts. Main thread only.
class LayerTransaction {
public:
    explicit LayerTransaction(std::chrono::milliseconds animationDuration);
    ~LayerTransaction();
    LayerTransaction(const LayerTransaction &) = delete;
    LayerTransaction &operator=(const LayerTransaction &) = delete;

    // The duration that the open transaction sets; none when none is open.
    static std::optional<std::chrono::milliseconds> animationDuration();

private:
    static inline LayerTransaction *s_innermost = nullptr;

    LayerTransaction *m_enclosing;
    std::chrono::milliseconds m_animationDuration;
};

} // namespace platform
