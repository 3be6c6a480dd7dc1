// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/CopyProgress.h"

namespace platform {

// One of cancelling and publishing comes first, and the other is too late.
bool CopyProgress::leave(State state)
{
    auto expected = Copying;
    return m_state.compare_exchange_strong(expected, state) || expected == state;
}

bool CopyProgress::cancel()
{
    return leave(Cancelled);
}

bool CopyProgress::beginPublishing()
{
    return leave(Publishing);
}

QByteArray CopyProgress::currentItem() const
{
    const std::lock_guard lock(m_mutex);
    return m_folder.isEmpty() ? m_name : m_folder + '/' + m_name;
}

void CopyProgress::setCurrentItem(const QByteArray &folder, const QByteArray &name)
{
    const std::lock_guard lock(m_mutex);
    m_folder = folder;
    m_name = name;
}

} // namespace platform
