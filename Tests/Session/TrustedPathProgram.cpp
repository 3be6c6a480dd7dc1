// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
//
// TrustedPathProgram PATH USER: what platform::openTrusted() says of a path.
#include "Platform/Core/Basics/TrustedPath.h"

#include <cstdio>
#include <cstdlib>

int main(int count, char **values)
{
    if (count != 3) {
        return 2;
    }
    const auto user = static_cast<uid_t>(std::strtoul(values[2], nullptr, 10));
    const auto trusted = platform::openTrusted(values[1], user);
    std::puts(trusted.file.isOpen() ? trusted.path.c_str() : trusted.objection.c_str());
    return trusted.file.isOpen() ? 0 : 1;
}
