// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/LayerTransaction.h"

namespace platform {

LayerTransaction::LayerTransaction(std::chrono::milliseconds animationDuration)
    : m_enclosing(s_innermost), m_animationDuration(animationDuration)
{
    s_innermost = this;
}

LayerTransaction::~LayerTransaction()
{
    s_innermost = m_enclosing;
}

std::optional<std::chrono::milliseconds> LayerTransaction::animationDuration()
{
    const LayerTransaction *transaction = s_innermost;
    return transaction != nullptr ? std::optional(transaction->m_animationDuration) : std::nullopt;
}

} // namespace platform
