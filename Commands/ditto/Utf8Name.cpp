// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/Utf8Name.h"

#include "Platform/Core/Text/FileName.h"

bool isUtf8(const QByteArray &name)
{
    // What is no UTF-8 becomes lone surrogates.
    const auto text = platform::fileNameFromBytes(name);
    for (auto at = decltype(text.size())(0); at < text.size(); ++at) {
        if (text.at(at).isHighSurrogate()) {
            ++at;
        } else if (text.at(at).isLowSurrogate()) {
            return false;
        }
    }
    return true;
}
