// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/FileError.h"

#include <system_error>

namespace platform {

QString FileError::reason() const
{
    return m_code == 0 ? QString()
                       : QString::fromStdString(std::generic_category().message(m_code));
}

QString FileError::localizedDescription() const
{
    return m_code == 0 || m_path.isEmpty() ? reason() : m_path + QStringLiteral(": ") + reason();
}

} // namespace platform
