// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/Interruption.h"

#include <array>
#include <atomic>
#include <csignal>

namespace {

std::atomic<int> arrived = 0;
static_assert(std::atomic<int>::is_always_lock_free);

void remember(int signal)
{
    arrived = signal;
}

} // namespace

void watchForInterruption()
{
    for (const auto signal : std::array{SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction before {};
        ::sigaction(signal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) {
            struct sigaction action {};
            action.sa_handler = remember;
            action.sa_flags = SA_RESTART;
            ::sigaction(signal, &action, nullptr);
        }
    }
}

bool isInterrupted()
{
    return arrived != 0;
}

void endIfInterrupted()
{
    if (const auto signal = arrived.load(); signal != 0) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
}
