// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

// A use of the process's authorisation as administrator: a pane that has not been left, a start or
// stop of the listener that is under way. The end of the last one ends the authorisation. Any
// thread.
class AuthorizationUse {
public:
    AuthorizationUse();
    ~AuthorizationUse();
    AuthorizationUse(const AuthorizationUse &) = delete;
    AuthorizationUse &operator=(const AuthorizationUse &) = delete;
};
