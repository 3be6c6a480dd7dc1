// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>

namespace platform {

// While it lives, no signal is delivered to the current thread. A thread started meanwhile never
// gets any: signals are for the program's own threads.
class SignalsBlocked {
public:
    SignalsBlocked()
    {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &m_previous);
    }
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_previous, nullptr); }
    SignalsBlocked(const SignalsBlocked &) = delete;
    SignalsBlocked &operator=(const SignalsBlocked &) = delete;

private:
    sigset_t m_previous{};
};

} // namespace platform
