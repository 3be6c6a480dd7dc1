// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Files/ZQFileManagerChange.h"

#include "Platform/Core/Threads/MainThread.h"
#include "Shared/Basics/ZQLocalPaths.h"

#include <QCoreApplication>

#include <thread>

namespace filemanager {
namespace {

void pauseOnce()
{
    using namespace std::chrono_literals;
    if (!platform::isMainThread()) {
        std::this_thread::sleep_for(300ms);
    } else if (QCoreApplication::instance() != nullptr) {
        platform::pumpEvents(10ms);
    } else {
        std::this_thread::sleep_for(10ms);
    }
}

} // namespace

platform::FileError refusal(const QString &path)
{
    return ZQLocalPaths::isPathSystemDirectory(path, ExactMatch::Yes)
               ? platform::FileError(EPERM, path)
               : platform::FileError();
}

bool waitUntil(const std::function<bool()> &condition, std::chrono::seconds timeout)
{
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const auto passed = [&] {
        // In whole seconds: a time-out may be longer than a count of nanoseconds can be.
        return std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start);
    };
    while (passed() < timeout && !condition()) {
        pauseOnce();
    }
    return condition();
}

} // namespace filemanager
