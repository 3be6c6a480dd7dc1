// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/MessageLocales.h"

namespace platform {
namespace {

QByteArray messageLocale()
{
    for (const auto *name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        auto value = qgetenv(name);
        if (!value.isEmpty()) {
            return value;
        }
    }
    return {};
}

bool isUntranslated(const QByteArray &locale)
{
    const auto name = locale.split('.').constFirst();
    return name.isEmpty() || name == "C" || name == "POSIX";
}

// language_COUNTRY.ENCODING@MODIFIER
void addVariants(const QByteArray &locale, QByteArrayList &all)
{
    const auto at = locale.indexOf('@');
    const auto modifier = at < 0 ? QByteArray() : locale.mid(at);
    const auto territory = locale.split('@').constFirst().split('.').constFirst();
    const auto language = territory.split('_').constFirst();
    for (const auto &base : {territory, language}) {
        for (const auto &variant : {base + modifier, base}) {
            if (!base.isEmpty() && !all.contains(variant)) {
                all << variant;
            }
        }
    }
}

} // namespace

QByteArrayList messageLocales()
{
    const auto locale = messageLocale();
    QByteArrayList all;
    if (isUntranslated(locale)) {
        return all;
    }
    const auto languages = qgetenv("LANGUAGE").split(':');
    for (const auto &language : languages) {
        addVariants(language, all);
    }
    addVariants(locale, all);
    return all;
}

} // namespace platform
