// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <clocale>

namespace platform {

// While it lives, the C library's functions on this thread know the "C" locale only: numbers have a
// point, whatever the user's language.
class CLocale {
public:
    CLocale()
    {
        static auto *const locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
        m_previous = ::uselocale(locale);
    }
    ~CLocale() { ::uselocale(m_previous); }
    CLocale(const CLocale &) = delete;
    CLocale &operator=(const CLocale &) = delete;

private:
    locale_t m_previous = nullptr;
};

} // namespace platform
