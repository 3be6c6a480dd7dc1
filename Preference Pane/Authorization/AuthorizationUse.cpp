// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Authorization/AuthorizationUse.h"

#include "Shared/Authorization/ZQAuthorization.h"

#include <mutex>

namespace {

// Held while the authorisation ends, so that no use begins with one that is about to go.
std::mutex mutex;
int uses = 0;

} // namespace

AuthorizationUse::AuthorizationUse()
{
    const std::lock_guard lock(mutex);
    ++uses;
}

AuthorizationUse::~AuthorizationUse()
{
    const std::lock_guard lock(mutex);
    if (--uses == 0) {
        ZQAuthorization::sharedController().authEnd();
    }
}
