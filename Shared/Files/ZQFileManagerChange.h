// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Text/PathText.h"
#include "Shared/Authorization/ShouldAuth.h"
#include "Shared/Authorization/ZQAuthorization.h"

#include <chrono>
#include <functional>
#include <utility>

// What the file manager's changes have in common.
namespace filemanager {

// Why a protected system folder must not be touched; no error for any other path.
platform::FileError refusal(const QString &path);

// Waits, for at most as long as that, until the condition holds; gives whether it holds then. The
// main thread dispatches events meanwhile, others sleep in steps of 0.3 s.
bool waitUntil(const std::function<bool()> &condition, std::chrono::seconds timeout);

// Repeats a change with administrator rights where that is allowed. The tools that do it run
// elsewhere and would take a leading dash for an option, so that they are given absolute paths.
template <typename Change, typename... Paths>
bool authorised(ShouldAuth shouldAuth, const Change &change, const Paths &...paths)
{
    return shouldAuth == ShouldAuth::Yes && (... && !paths.contains(QChar(0))) &&
           std::invoke(change, ZQAuthorization::sharedController(),
                       platform::absolutePath(paths)...);
}

} // namespace filemanager
