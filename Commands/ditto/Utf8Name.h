// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Text/FileName.h"

// Whether the bytes of a name are UTF-8; other names are in an unknown encoding.
inline bool isUtf8(const QByteArray &name)
{
    // What is no UTF-8 becomes lone surrogates.
    return platform::fileNameFromBytes(name).isValidUtf16();
}
