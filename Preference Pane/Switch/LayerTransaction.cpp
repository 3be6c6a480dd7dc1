// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/LayerTransaction.h"

namespace platform {
namespace {

LayerTransaction *&innermost()
{
    static LayerTransaction *transaction = nullptr;
    return transaction;
}

} // namespace

LayerTransaction::LayerTransaction(std::chrono::milliseconds animationDuration)
    : m_enclosing(innermost()), m_animationDuration(animationDuration)
{
    innermost() = this;
}

LayerTransaction::~LayerTransaction()
{
    innermost() = m_enclosing;
}

std::optional<std::chrono::milliseconds> LayerTransaction::animationDuration()
{
    const LayerTransaction *transaction = innermost();
    return transaction != nullptr ? std::optional(transaction->m_animationDuration) : std::nullopt;
}

} // namespace platform
